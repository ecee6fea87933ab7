namespace Tarn
{
    /// <summary>
    /// The status codes that the library tells apart. A daemon may answer with others: any number can occur.
    /// </summary>
    public enum TarnStatus
    {
        /// <summary>No status was read.</summary>
        None = -1,
        /// <summary>Success.</summary>
        Ok = 0,
        /// <summary>Wrong credentials, as 17 and 200.</summary>
        WrongPassword = 2,
        /// <summary>The recipient has an account, whose password opens the envelope.</summary>
        PasswordNeeded = 5,
        /// <summary>The envelope was kept open: its session key opens it too.</summary>
        SessionKeyAlive = 6,
        /// <summary>The address is the sender's.</summary>
        AskedBySender = 7,
        /// <summary>The address has no account and can be enrolled.</summary>
        NotEnrolled = 11,
        /// <summary>The message is not for this address.</summary>
        NotARecipient = 15,
        /// <summary>The daemon does not know the envelope's message.</summary>
        UnknownEnvelope = 16,
        /// <summary>The account is disabled; wrong credentials.</summary>
        AccountDisabled = 17,
        /// <summary>Too many wrong passwords; comes with a number.</summary>
        TooManyTries = 18,
        /// <summary>The message has expired.</summary>
        Expired = 19,
        /// <summary>The sender locked the message and left words for the recipient.</summary>
        LockedWithMessage = 20,
        /// <summary>The sender locked the message.</summary>
        Locked = 21,
        /// <summary>Enrollment is needed or not finished; comes with a text for the user.</summary>
        EnrollmentUnfinished = 25,
        /// <summary>The envelope is damaged.</summary>
        DamagedEnvelope = 26,
        /// <summary>The text is not an envelope.</summary>
        NoEnvelope = 34,
        /// <summary>The session key is not valid; wrong credentials.</summary>
        SessionKeyInvalid = 200
    }
}
