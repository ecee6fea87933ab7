using System;
using System.Collections.Generic;
using System.Diagnostics.CodeAnalysis;
using System.Linq;
using System.Threading;
using System.Threading.Tasks;

namespace Tarn
{
    public sealed partial class TarnClient
    {
        private const int MostQuestions = 3;

        /// <inheritdoc/>
        public Task<KeyServerFeatures> GetKeyServerFeaturesAsync(
            CancellationToken cancellation = default(CancellationToken))
        {
            const string call = "GetKeyServerInfo";
            string config = CheckedConfigFile();
            OperationLog.RequireRoom(call, nameof(ConfigFile), new[] { config });
            return Call(call, () =>
            {
                byte readBy = 0, expiration = 0, localizedText = 0;
                Require(call, Logged(log => TarnRemoteClient.GetKeyServerInfo(config, ref readBy, ref expiration,
                    ref localizedText, log)));
                return new KeyServerFeatures
                {
                    ReadBy = readBy != 0,
                    Expiration = expiration != 0,
                    LocalizedText = localizedText != 0
                };
            }, cancellation);
        }

        /// <inheritdoc/>
        public Task<IReadOnlyDictionary<string, string>> GetLocalesAsync(
            CancellationToken cancellation = default(CancellationToken))
        {
            const string call = "GetSupportedLocales";
            string config = CheckedConfigFile();
            OperationLog.RequireRoom(call, nameof(ConfigFile), new[] { config });
            return Call(call, () =>
            {
                using (var locales = TextBuffer.WideList())
                {
                    int status = Logged(log => TarnRemoteClient.GetSupportedLocales(config, locales.Memory, log));
                    Require(call, status, "", locales);
                    return ListTexts.Entries(locales.Text);
                }
            }, cancellation);
        }

        /// <inheritdoc/>
        public Task<MessageBody> GetMessageBodyAsync([AllowNull] string locale,
            CancellationToken cancellation = default(CancellationToken))
        {
            const string call = "GetLocalizedMessageBody";
            byte[] name = Utf8.Encode(locale, nameof(locale));
            string config = CheckedConfigFile();
            OperationLog.RequireRoom(call, nameof(locale), new[] { config, locale ?? "" });
            return Call(call, () =>
            {
                using (var text = TextBuffer.List())
                using (var html = TextBuffer.List())
                {
                    int status = Logged(log =>
                        TarnRemoteClient.GetLocalizedMessageBody(config, name, text.Memory, html.Memory, log));
                    Require(call, status, "", text, html);
                    return new MessageBody { Text = text.Text, Html = html.Text };
                }
            }, cancellation);
        }

        /// <inheritdoc/>
        public Task<EnrollmentForm> GetEnrollmentFormAsync(string emailAddress, string keyServer,
            [AllowNull] string locale = null, CancellationToken cancellation = default(CancellationToken))
        {
            const string call = "GetEnrollParameters";
            byte[] address = Arguments.RequiredUtf8(emailAddress, nameof(emailAddress));
            byte[] server = Arguments.RequiredUtf8(keyServer, nameof(keyServer));
            string localeName = Arguments.Wide(locale, nameof(locale));
            OperationLog.RequireRoom(call, nameof(keyServer), new[] { emailAddress, keyServer, localeName });
            return Call(call, () =>
            {
                int samlUser = 0, oneClickUser = 0, questionCount = 0, questionsEditable = 0;
                using (var locales = TextBuffer.WideList())
                using (var questions = TextBuffer.WideList())
                {
                    int status = Logged(log => TarnRemoteClient.GetEnrollParameters(address, server, localeName,
                        ref samlUser, ref oneClickUser, ref questionCount, ref questionsEditable, locales.Memory,
                        questions.Memory, log));
                    Require(call, status, "", locales, questions);
                    return new EnrollmentForm
                    {
                        SamlUser = samlUser != 0,
                        OneClickUser = oneClickUser != 0,
                        QuestionCount = questionCount,
                        QuestionsEditable = questionsEditable != 0,
                        Locales = ListTexts.Entries(locales.Text),
                        Questions = ListTexts.Entries(questions.Text)
                    };
                }
            }, cancellation);
        }

        /// <inheritdoc/>
        public Task<IReadOnlyDictionary<string, string>> EnrollAsync(Enrollment form,
            CancellationToken cancellation = default(CancellationToken))
        {
            const string call = "UserEnroll";
            Arguments.Required(form, nameof(form));
            byte[] address = Arguments.RequiredUtf8(form.EmailAddress, nameof(form.EmailAddress));
            byte[] server = Utf8.Encode(form.KeyServer, nameof(form.KeyServer));
            string firstName = Arguments.Wide(form.FirstName, nameof(form.FirstName));
            string lastName = Arguments.Wide(form.LastName, nameof(form.LastName));
            string password = Arguments.Wide(form.Password, nameof(form.Password));
            string locale = Arguments.Wide(form.Locale, nameof(form.Locale));
            byte[] enrollId = Utf8.Encode(form.EnrollmentId, nameof(form.EnrollmentId));
            byte[] sender = Utf8.Encode(form.SenderEmailAddress, nameof(form.SenderEmailAddress));
            string passPhrase = Arguments.Wide(form.PassPhrase, nameof(form.PassPhrase));
            string[] questions = ThreeTexts(form.Questions, nameof(form.Questions));
            string[] answers = ThreeTexts(form.Answers, nameof(form.Answers));
            byte[] timeFormat = Utf8.Encode(form.TimeFormat, nameof(form.TimeFormat));
            int simple = form.Simple ? 1 : 0, stage = (int)form.Stage, timeZone = form.TimeZone;
            OperationLog.RequireRoom(call, nameof(form), new[] { form.EmailAddress, form.KeyServer, firstName, lastName,
                locale, form.EnrollmentId, form.SenderEmailAddress, form.TimeFormat }.Concat(questions)
                .Select(text => text ?? ""));
            return Call(call, () =>
            {
                using (var result = TextBuffer.Value())
                {
                    int status = Logged(log => TarnRemoteClient.UserEnroll(address, server, firstName, lastName,
                        password, locale, enrollId, sender, simple, stage, passPhrase, questions[0], questions[1],
                        questions[2], answers[0], answers[1], answers[2], timeZone, timeFormat, result.Memory, log));
                    Require(call, status, result.Text, result);
                    return ListTexts.Entries(result.Text);
                }
            }, cancellation);
        }

        private static string[] ThreeTexts(IList<string> texts, string parameter)
        {
            if (texts.Count > MostQuestions)
                throw new ArgumentException("an enrollment has at most three questions and answers", parameter);
            return texts.Concat(new[] { "", "", "" }).Take(MostQuestions)
                .Select(text => Arguments.Wide(text, parameter)).ToArray();
        }
    }
}
