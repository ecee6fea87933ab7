using System.Collections.Generic;
using System.Diagnostics.CodeAnalysis;

namespace Tarn
{
    /// <summary>What the key server can do.</summary>
    public sealed class KeyServerFeatures
    {
        /// <summary>It tells when a message was read.</summary>
        public bool ReadBy { get; set; }
        /// <summary>It can expire messages.</summary>
        public bool Expiration { get; set; }
        /// <summary>It has localized message texts.</summary>
        public bool LocalizedText { get; set; }
    }

    /// <summary>The texts of the mail that carries an envelope.</summary>
    public sealed class MessageBody
    {
        /// <summary>The plain text; empty when there is none in the locale.</summary>
        public string Text { get; set; } = "";
        /// <summary>The HTML text; empty when there is none in the locale.</summary>
        public string Html { get; set; } = "";
    }

    /// <summary>The enrollment form that applies to an address.</summary>
    public sealed class EnrollmentForm
    {
        /// <summary>Whether the user signs on elsewhere.</summary>
        public bool SamlUser { get; set; }
        /// <summary>Whether no form is to be filled in.</summary>
        public bool OneClickUser { get; set; }
        /// <summary>How many security questions are to be answered.</summary>
        public int QuestionCount { get; set; }
        /// <summary>Whether the user may word the questions.</summary>
        public bool QuestionsEditable { get; set; }
        /// <summary>The names of the locales to choose from, by locale.</summary>
        public IReadOnlyDictionary<string, string> Locales { get; set; } = new Dictionary<string, string>();
        /// <summary>The questions to choose from, by id.</summary>
        public IReadOnlyDictionary<string, string> Questions { get; set; } = new Dictionary<string, string>();
    }

    /// <summary>The stages of an enrollment. The daemon gives them their meaning; other numbers can be used.</summary>
    public enum EnrollmentStage
    {
        /// <summary>The form is sent.</summary>
        Form = 0,
        /// <summary>The enrollment is confirmed.</summary>
        Confirm = 1
    }

    /// <summary>A filled-in enrollment form. Password, pass phrase and answers never reach the log.</summary>
    public sealed class Enrollment
    {
        /// <summary>The address to enroll.</summary>
        public string EmailAddress { get; set; } = "";
        /// <summary>The key server's address (URL).</summary>
        public string KeyServer { get; set; } = "";
        /// <summary>The user's first name.</summary>
        public string FirstName { get; set; } = "";
        /// <summary>The user's last name.</summary>
        public string LastName { get; set; } = "";
        /// <summary>The new account's password.</summary>
        public string Password { get; set; } = "";
        /// <summary>The new account's locale, or null.</summary>
        [AllowNull, MaybeNull] public string Locale { get; set; }
        /// <summary>The id from <see cref="PayloadStatus.EnrollmentId"/>.</summary>
        public string EnrollmentId { get; set; } = "";
        /// <summary>The sender of the message that waits.</summary>
        public string SenderEmailAddress { get; set; } = "";
        /// <summary>Whether to register without security questions.</summary>
        public bool Simple { get; set; }
        /// <summary>The stage of the enrollment.</summary>
        public EnrollmentStage Stage { get; set; }
        /// <summary>The personal pass phrase, or null.</summary>
        [AllowNull, MaybeNull] public string PassPhrase { get; set; }
        /// <summary>Up to three security questions.</summary>
        public IList<string> Questions { get; } = new List<string>();
        /// <summary>The answers, in the order of the questions.</summary>
        public IList<string> Answers { get; } = new List<string>();
        /// <summary>Minutes east of UTC.</summary>
        public int TimeZone { get; set; }
        /// <summary>The time format; logged, not sent.</summary>
        public string TimeFormat { get; set; } = "";
    }
}
