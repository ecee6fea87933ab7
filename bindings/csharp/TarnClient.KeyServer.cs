using System;
using System.Collections.Generic;
using System.Linq;

namespace Tarn
{
    public sealed partial class TarnClient
    {
        /// <summary>Asks what the key server can do.</summary>
        /// <remarks>
        /// The library logs the server's whole feature table; a table of 30,000 bytes and more ends the process.
        /// </remarks>
        public KeyServerFeatures GetKeyServerFeatures()
        {
            byte readBy = 0, expiration = 0, localizedText = 0;
            Run("GetKeyServerInfo", new[] { ConfigFile }, log => TarnRemoteClient.GetKeyServerInfo(Wide(ConfigFile),
                ref readBy, ref expiration, ref localizedText, log.Memory));
            return new KeyServerFeatures
            {
                ReadBy = readBy != 0,
                Expiration = expiration != 0,
                LocalizedText = localizedText != 0
            };
        }

        /// <summary>The names of the locales that the key server has texts in, by locale.</summary>
        public IReadOnlyDictionary<string, string> GetLocales()
        {
            using (var locales = TextBuffer.WideList())
            {
                Run("GetSupportedLocales", new[] { ConfigFile },
                    log => TarnRemoteClient.GetSupportedLocales(Wide(ConfigFile), locales.Memory, log.Memory));
                return ParseEntries(locales.Text);
            }
        }

        /// <summary>The texts that stand around an envelope, in one locale; null stands for "en".</summary>
        public MessageBody GetMessageBody(string locale)
        {
            byte[] name = Utf8.Encode(locale);
            using (var text = TextBuffer.List())
            using (var html = TextBuffer.List())
            {
                Run("GetLocalizedMessageBody", new[] { ConfigFile },
                    log => TarnRemoteClient.GetLocalizedMessageBody(Wide(ConfigFile), name, text.Memory, html.Memory,
                        log.Memory));
                return new MessageBody { Text = text.Text, Html = html.Text };
            }
        }

        /// <summary>Asks which enrollment form applies to an address.</summary>
        public EnrollmentForm GetEnrollmentForm(string emailAddress, string keyServer, string locale = null)
        {
            byte[] address = Utf8.Encode(emailAddress), server = Utf8.Encode(keyServer);
            int samlUser = 0, oneClickUser = 0, questionCount = 0, questionsEditable = 0;
            using (var locales = TextBuffer.WideList())
            using (var questions = TextBuffer.WideList())
            {
                Run("GetEnrollParameters", new[] { emailAddress, keyServer, locale },
                    log => TarnRemoteClient.GetEnrollParameters(address, server, Wide(locale), ref samlUser,
                        ref oneClickUser, ref questionCount, ref questionsEditable, locales.Memory, questions.Memory,
                        log.Memory));
                return new EnrollmentForm
                {
                    SamlUser = samlUser != 0,
                    OneClickUser = oneClickUser != 0,
                    QuestionCount = questionCount,
                    QuestionsEditable = questionsEditable != 0,
                    Locales = ParseEntries(locales.Text),
                    Questions = ParseEntries(questions.Text)
                };
            }
        }

        /// <summary>Sends a filled-in enrollment form.</summary>
        /// <returns>The daemon's answers, by name.</returns>
        public IReadOnlyDictionary<string, string> Enroll(Enrollment form)
        {
            if (form.Questions.Count > 3 || form.Answers.Count > 3)
                throw new ArgumentException("an enrollment has at most three questions and answers");
            string[] questions = form.Questions.Concat(new string[3]).Take(3).Select(Wide).ToArray();
            string[] answers = form.Answers.Concat(new string[3]).Take(3).Select(Wide).ToArray();
            byte[] address = Utf8.Encode(form.EmailAddress), server = Utf8.Encode(form.KeyServer);
            byte[] enrollId = Utf8.Encode(form.EnrollmentId), sender = Utf8.Encode(form.SenderEmailAddress);
            byte[] timeFormat = Utf8.Encode(form.TimeFormat);
            var logged = new[] { form.EmailAddress, form.KeyServer, form.FirstName, form.LastName, form.Locale,
                form.EnrollmentId, form.SenderEmailAddress, form.TimeFormat }.Concat(questions);
            using (var result = TextBuffer.Value())
            {
                Run("UserEnroll", logged, log => TarnRemoteClient.UserEnroll(address, server, Wide(form.FirstName),
                    Wide(form.LastName), Wide(form.Password), Wide(form.Locale), enrollId, sender, form.Simple ? 1 : 0,
                    form.Stage, Wide(form.PassPhrase), questions[0], questions[1], questions[2], answers[0], answers[1],
                    answers[2], form.TimeZone, timeFormat, result.Memory, log.Memory));
                return ParseEntries(result.Text);
            }
        }
    }
}
