/*
 * TarnRemoteClient: the native client library of the secure-mail plug-in.
 *
 * Every call is forwarded to the daemon, a local program on TCP port 53007 of the loopback interface. The library
 * itself encrypts nothing. These conventions hold for all 21 functions; a function's own comment adds only what is
 * its own.
 *
 * Calls    Plain C functions of the platform's default calling convention. No exception leaves them.
 *
 * Threads  One call at a time, all calls from one thread or serialized by the caller. The connection, the operation
 *          log, the client version text and the decrypted items are process-wide and not guarded.
 *
 * Waiting  Calls block until the daemon has answered; there is no time limit. A daemon that closes the connection
 *          in an orderly way while its reply is awaited leaves the call waiting for ever. A reset connection ends
 *          the call with its failure value.
 *
 * Connection  The first call that needs the daemon connects; later calls reuse the connection. Only StopTarnDaemon
 *          closes it, once the daemon has answered. A connection that broke is not replaced: all further calls of the
 *          process fail.
 *
 * Text     `const char *` is a zero-terminated text sent to the daemon byte for byte (the daemon expects UTF-8);
 *          null is sent as an empty text unless the function says "not null". `const TarnWideChar *` is a
 *          zero-terminated UTF-16 text, sent as UTF-8; null counts as empty. Ill-formed UTF-16 or UTF-8 is replaced
 *          by U+FFFD in a conversion and never fails a call.
 *
 * Results  Output texts are written with their terminator and WITHOUT A BOUND: the caller supplies buffers that
 *          hold whatever the daemon may send. 8-bit output texts are UTF-8 as received and end at their first zero
 *          byte. Output pointers must not be null unless the function allows it. An output that a function's
 *          comment does not name for an outcome keeps its former contents.
 *
 * Lists    Several texts returned as one are joined with TARN_LIST_DELIMITER between them, never after the last.
 *          Recipient lists of the caller are one text with ";" between the items; an empty text is one empty item.
 *
 * Memory   Buffers belong to the caller. What the library allocates for the caller is task memory: released with
 *          CoTaskMemFree on Windows, with free elsewhere. The library keeps no pointer of the caller's.
 *
 * Flags    One byte, 0 or 1; any nonzero byte given counts as 1.
 *
 * Status   A status code is the daemon's signed 16-bit number, 0 for success, widened with its sign; -1 stands for
 *          "no reply was read". After a failure in the middle of a call (connection, protocol, memory) a function
 *          returns the last status it had read, unless its comment says otherwise.
 *
 * Log      `log` is a buffer of at least TARN_LOG_SIZE bytes, not null, that receives the operation log of this
 *          call: lines "[TarnRemoteClient:LINE] MESSAGE" ended by "\n". A log that does not fit ENDS THE PROCESS (as
 *          the run-time's bounded string copy does on an overflow), and so does a null log buffer. The log names
 *          most values sent and received but never a password, a pass phrase or a security answer. It grows with
 *          each recipient, key server feature and configuration entry: callers keep those numbers in bounds, as
 *          the functions say. A failed call logs "Unexpected exception occured. GetLastError() : " and the
 *          system's error number.
 */
#ifndef TARN_REMOTE_CLIENT_H
#define TARN_REMOTE_CLIENT_H

#include <stddef.h>
#include <stdint.h>

#if defined(_WIN32)
#include <wchar.h>
typedef wchar_t TarnWideChar;
#else
#include <uchar.h>
typedef char16_t TarnWideChar;
#endif

#if defined(_WIN32) && !defined(TARN_REMOTE_CLIENT_BUILD)
#define TARN_API __declspec(dllimport)
#elif defined(__GNUC__)
#define TARN_API __attribute__((visibility("default")))
#else
#define TARN_API
#endif

#define TARN_LOG_SIZE 32766
#define TARN_LIST_DELIMITER "{plugin_delimiter}"

/*
 * One tracking record: what the daemon knows about one recipient of one sent message. 72 bytes on 32-bit and 64-bit
 * systems alike: each pointer stands in an 8-byte slot. Dates and the expiry are the daemon's own numbers, passed on
 * as they are (the stand-in daemon uses milliseconds since 1970-01-01 UTC; 0 stands for "not set").
 *
 * The four texts are task memory. In a record that the library returned they belong to the caller, who releases each
 * of them and then the array itself, all with the task allocator.
 */
#if UINTPTR_MAX == UINT32_MAX
#define TARN_TEXT_SLOT(name)                                                                                           \
    TarnWideChar* name;                                                                                                \
    uint32_t name##Padding
#else
#define TARN_TEXT_SLOT(name) TarnWideChar* name
#endif

typedef struct TarnRecipientEntry
{
    int64_t createDate;            /* offset  0: when the message was sent */
    int64_t firstOpenDate;         /* offset  8: when this recipient first opened it, 0 for never */
    int64_t lastModifiedDate;      /* offset 16: when this record last changed */
    int64_t expiryDate;            /* offset 24: from when on it cannot be opened, 0 for never */
    int32_t numTries;              /* offset 32: how often this recipient tried to open it */
    int32_t flags;                 /* offset 36: TARN_FLAG_LOCKED and others of the daemon's */
    TARN_TEXT_SLOT(subject);       /* offset 40: released by the caller */
    TARN_TEXT_SLOT(recipient);     /* offset 48: released by the caller */
    TARN_TEXT_SLOT(statusMessage); /* offset 56: released by the caller */
    TARN_TEXT_SLOT(messageId);     /* offset 64: released by the caller */
} TarnRecipientEntry;

#define TARN_FLAG_LOCKED 2

#if defined(__cplusplus)
#define TARN_ASSERT_LAYOUT(condition) static_assert(condition, #condition)
extern "C" {
#else
#define TARN_ASSERT_LAYOUT(condition) _Static_assert(condition, #condition)
#endif
TARN_ASSERT_LAYOUT(sizeof(TarnRecipientEntry) == 72);
TARN_ASSERT_LAYOUT(offsetof(TarnRecipientEntry, createDate) == 0);
TARN_ASSERT_LAYOUT(offsetof(TarnRecipientEntry, firstOpenDate) == 8);
TARN_ASSERT_LAYOUT(offsetof(TarnRecipientEntry, lastModifiedDate) == 16);
TARN_ASSERT_LAYOUT(offsetof(TarnRecipientEntry, expiryDate) == 24);
TARN_ASSERT_LAYOUT(offsetof(TarnRecipientEntry, numTries) == 32);
TARN_ASSERT_LAYOUT(offsetof(TarnRecipientEntry, flags) == 36);
TARN_ASSERT_LAYOUT(offsetof(TarnRecipientEntry, subject) == 40);
TARN_ASSERT_LAYOUT(offsetof(TarnRecipientEntry, recipient) == 48);
TARN_ASSERT_LAYOUT(offsetof(TarnRecipientEntry, statusMessage) == 56);
TARN_ASSERT_LAYOUT(offsetof(TarnRecipientEntry, messageId) == 64);

/* ---- Daemon lifecycle ---------------------------------------------------------------------------------------- */

/*
 * Launches the daemon: the Java run-time at its fixed place, hidden, with "-jar " and jarDaemon as its parameters.
 * Neither connects nor waits until the daemon listens.
 *
 * jarDaemon  in: path of the daemon's jar file, in the system's own 8-bit encoding. It is not quoted: a path with
 *            spaces reaches Java in pieces.
 * Returns    1 when the system accepted the launch, else 0. The log holds the system's answer ("ShellExecute
 *            returned: " and a number: above 32 accepted, 2 no such program).
 */
TARN_API uint8_t StartTarnDaemon(const char* jarDaemon, char* log);

/*
 * Asks the daemon to stop and closes the connection once it has answered, whatever the answer.
 *
 * Returns  1 when the daemon answered with status 0, else 0. When the daemon could not be reached, or its reply could
 *          not be read, the result is 0 and the connection is left as it is.
 */
TARN_API uint8_t StopTarnDaemon(char* log);

/*
 * Asks the daemon for its version and logs its memory figures in bytes (their low 32 bits, as a signed number).
 * Also builds the client version text that most other calls send: a client that never calls this sends it empty.
 *
 * version  out: with status 0, the daemon's version, "-" and its build number, such as 7.6.1-42.
 * Returns  the status code.
 */
TARN_API int32_t GetTarnVersion(char* version, char* log);

/* ---- Authentication and configuration check ------------------------------------------------------------------ */

/*
 * Logs a user in.
 *
 * emailAddress  in, not null: the user's address.
 * password      in, not null.
 * configFile    in: path of the envelope configuration file; sent only when not empty.
 * result        out, written for every reply read: with status 25 a text of the daemon's for the user, with status 18
 *               a number of the daemon's in decimal, else an empty text. (The stand-in daemon: a link to enroll by,
 *               the seconds to wait.)
 * Returns       the status code. A failed call logs "Unknown exception occured, setting status to -1. GetLastError()
 *               : " instead of the usual line.
 */
TARN_API int32_t AuthenticateUser(const char* emailAddress, const char* password, const TarnWideChar* configFile,
                                  char* result, char* log);

/*
 * Asks the daemon to check the configuration that belongs to a sender.
 *
 * sender      in, not null: the sender's address.
 * configFile  in: path of the envelope configuration file; sent only when not empty.
 * Returns     the status code; -1 after any failure, even one after the status was read; 0 when there was no memory
 *             for the reply.
 */
TARN_API int32_t VerifyLarchConfig(const char* sender, const TarnWideChar* configFile, char* log);

/* ---- Online encryption --------------------------------------------------------------------------------------- */

/*
 * Turns a MIME message into an encrypted envelope. Unless it is suppressed a login comes first, on the same
 * connection.
 *
 * toList, ccList, bccList  in: recipients, ";" between them. Each adds its address and some 55 bytes to the log.
 * from                     in: the sender's address, also the user name of the login.
 * password                 in: the sender's password, used by the login alone.
 * mimeMessage              in: the whole message, ended by its first zero byte.
 * configFile               in: path of the envelope configuration file; sent only when not empty.
 * envelopeOut, tbOut, thOut, anOut
 *                          out, written with envelope status 0 alone: the envelope, its text body, its HTML body and
 *                          its attachment name.
 * encodedEnvelopeConfig    in: an envelope configuration as DecryptEnvelope returns it (each byte as a signed decimal
 *                          number followed by "&"), or empty. When not empty, no login takes place. Entries with an
 *                          empty value, or with ": " in it, do not come through as they are.
 * loginFlag                in: "0" suppresses the login, any other text does not.
 * log                      out: NOT written when the login is answered with a nonzero status.
 * Returns                  the last status code obtained: the login's when that is not 0, else the envelope's. A
 *                          failure while the envelope is built after a successful login returns the login's 0, with
 *                          the failure line in the log and no output written.
 */
TARN_API int32_t EncryptEnvelopeOnline(const char* toList, const char* ccList, const char* bccList, const char* from,
                                       const char* password, const char* mimeMessage, const TarnWideChar* configFile,
                                       TarnWideChar* envelopeOut, TarnWideChar* tbOut, TarnWideChar* thOut,
                                       TarnWideChar* anOut, const char* encodedEnvelopeConfig, const char* loginFlag,
                                       char* log);

/* ---- Decryption and payload status --------------------------------------------------------------------------- */

/*
 * Decrypts an envelope. With status 0 the decrypted items replace those of the previous call and are read one by one
 * with GetNextDecryptedItemInfo and GetNextDecryptedItem; with any other outcome the previous items stay.
 *
 * password    in, not null: may be empty.
 * envelope    in: the envelope text; sent only when not empty.
 * configFile  in: path of the envelope configuration file; sent only when not empty.
 * recipient   in: the recipient's address; sent only when not empty.
 * sessionKey  in: sent only when not empty, and logged.
 * configOut   out, with status 0: the envelope configuration, each byte of its "key: value; " text as a signed
 *             decimal number followed by "&" (up to five bytes for each byte of that text).
 * keepOpen    in: a flag that is passed on to the daemon when set.
 * kuOut       out, with status 0: the payload's key text.
 * fromOut     out, with status 0: the sender's address.
 * Returns     the status code. 2, 17 and 200 mean wrong credentials.
 */
TARN_API int32_t DecryptEnvelope(const char* password, const char* envelope, const TarnWideChar* configFile,
                                 const char* recipient, const char* sessionKey, char* configOut, uint8_t keepOpen,
                                 TarnWideChar* kuOut, TarnWideChar* fromOut, char* log);

/*
 * Tells the sizes of the next decrypted item and stays at it. Writes no log.
 *
 * nameSize           out: bytes of its name; 0 when there is no next item.
 * contentTypeLength  out: bytes of its content type, without the terminator; not written when there is no next item.
 * dataSize           out: bytes of its data; 0 when there is no next item.
 * Returns            1, or 0 when there is no next item.
 */
TARN_API uint32_t GetNextDecryptedItemInfo(uint32_t* nameSize, uint32_t* contentTypeLength, uint32_t* dataSize);

/*
 * Hands out the next decrypted item and moves on to the one after it. Writes no log. Nothing is written when there is
 * no next item.
 *
 * flags, type        out: the item's two numbers.
 * nameBuffer         out: the name's bytes (UTF-8), WITHOUT a terminator; not touched by an empty name.
 * contentTypeBuffer  in/out, an initialised text: the content type is APPENDED to it, with a terminator.
 * dataBuffer         out: the data's bytes, without a terminator; not touched by an empty item.
 * Returns            1, or 0 when there is no next item.
 */
TARN_API uint32_t GetNextDecryptedItem(uint32_t* flags, uint32_t* type, uint8_t* nameBuffer, char* contentTypeBuffer,
                                       uint8_t* dataBuffer);

/*
 * Asks for the status of an envelope, recipient by recipient, without decrypting it. Its log is copied nowhere.
 *
 * envelope        in: the envelope text; sent only when not empty.
 * configFile      in: path of the envelope configuration file; sent only when not empty.
 * recipientList   in: recipients, ";" between them.
 * statusTextsOut  out: one text a recipient, as a list: for the statuses 11 and 25 the daemon's text for the user, for
 *                 20 its message, for 18 its number (the stand-in daemon: the seconds to wait); else empty.
 * enrollIdOut     out, with a status 11 or 25: the enrollment id (of the last such recipient).
 * fromOut         out, with a status 11 or 25: the sender's address (likewise).
 * statusCodesOut  out: the status codes in decimal, ";" between them.
 * sensitivity     out: the message's sensitivity, -1 until a reply was read.
 *
 * A status other than 5, 6, 7, 11, 15 to 21, 25, 26 and 34 ends the walk after its recipient: the lists hold the
 * recipients up to it. After a failure the two lists are not written.
 * Returns         the last status code read.
 */
TARN_API int32_t GetPayloadStatus(const char* envelope, const TarnWideChar* configFile, const char* recipientList,
                                  TarnWideChar* statusTextsOut, char* enrollIdOut, char* fromOut, char* statusCodesOut,
                                  int32_t* sensitivity);

/*
 * Asks for the recipients and the sensitivity of an envelope without decrypting it.
 *
 * envelope        in: the envelope text; sent only when not empty.
 * recipientsOut   out, for every reply read: the To and then the Cc recipients, each followed by ";".
 * sensitivityOut  out, for every reply read: the message's sensitivity.
 * Returns         the status code.
 */
TARN_API int32_t GetRecipients(const char* envelope, TarnWideChar* recipientsOut, uint32_t* sensitivityOut, char* log);

/* ---- Message tracking ---------------------------------------------------------------------------------------- */

/*
 * Reads lock, status message and expiry of each recipient of an envelope.
 *
 * password           in: sent only when not empty.
 * envelope           in: the envelope text; sent only when not empty.
 * configFile         in: path of the envelope configuration file; sent only when not empty.
 * recipientsOut      out, for every reply read: the recipients' addresses, as a list.
 * lockStatusesOut    out, for every reply read: "1" (locked) or "0" for each, as a list.
 * statusMessagesOut  out, for every reply read: the status messages, as a list.
 * expiryDatesOut     out, for every reply read: the expiry dates in decimal, as a list.
 * messageIdOut       out, may be null, for every reply read: the message id.
 * recipientCount     out, may be null, for every reply read: how many recipients the lists hold.
 *
 * With a nonzero status the four lists are empty texts and the count is 0.
 * Returns            the status code.
 */
TARN_API int32_t GetLockExpireStatus(const char* password, const char* envelope, const TarnWideChar* configFile,
                                     char* recipientsOut, char* lockStatusesOut, TarnWideChar* statusMessagesOut,
                                     char* expiryDatesOut, char* messageIdOut, uint32_t* recipientCount, char* log);

/*
 * Sets lock, status message and expiry of recipients of an envelope, one exchange with the daemon for each.
 *
 * password        in: sent only when not empty.
 * envelope        in: the envelope text; sent only when not empty.
 * configFile      in: path of the envelope configuration file; sent only when not empty.
 * recipients      in: count addresses.
 * lockStatuses    in: count numbers, nonzero for locked.
 * statusMessages  in: count texts.
 * expiryDates     in: count dates, in the daemon's unit; 0 for never.
 * count           in: how many recipients; with 0 nothing is sent and the result is -1. Each adds some 600 bytes to
 *                 the log: at most 40 a call are safe.
 * Returns         the status code of the last exchange. A failure ends the walk and leaves the recipients before it
 *                 as they were set.
 */
TARN_API int32_t SetLockExpireStatus(const char* password, const char* envelope, const TarnWideChar* configFile,
                                     const char* const* recipients, const int32_t* lockStatuses,
                                     const TarnWideChar* const* statusMessages, const int64_t* expiryDates,
                                     uint32_t count, char* log);

/*
 * Lists the tracking records of a user's sent messages, a page at a time.
 *
 * userName    in: the sender's address; sent only when not empty.
 * password    in: sent only when not empty.
 * configFile  in: path of the envelope configuration file; sent only when not empty.
 * entries     out: null from the start. With status 0 an array in task memory, one record for each distinct pair of
 *             message id and recipient; the array and the texts in it belong to the caller.
 * startAt     in: index of the first record wanted (the stand-in daemon counts from 0).
 * maxResults  in, not null, only read: how many records are wanted.
 * entryCount  out: 0 from the start; with status 0 how many records the array holds.
 * totalCount  out: 0 from the start; for every reply read how many records there are in all.
 * sortBy      in: name of the field to sort by, such as "createDate"; sent only when not empty.
 * ascending   in: a flag.
 * Returns     the status code.
 */
TARN_API int32_t GetRecipientEntries(const char* userName, const char* password, const TarnWideChar* configFile,
                                     TarnRecipientEntry** entries, uint32_t startAt, const uint32_t* maxResults,
                                     uint32_t* entryCount, uint32_t* totalCount, const char* sortBy, uint8_t ascending,
                                     char* log);

/*
 * Sets lock, status message and expiry of tracking records, given a map of field values (which the stand-in daemon
 * takes as what selects the records).
 *
 * password       in: sent only when not empty.
 * configFile     in: path of the envelope configuration file; sent only when not empty.
 * fieldNames     in: fieldCount names, such as "msgId" and "to"; of equal names the last one counts.
 * fieldValues    in: fieldCount values, one for each name.
 * fieldCount     in.
 * lockStatus     in: nonzero for locked.
 * statusMessage  in.
 * expiryDate     in: in the daemon's unit; 0 for never.
 * Returns        the status code.
 */
TARN_API int32_t SetRecipientEntries(const char* password, const TarnWideChar* configFile,
                                     const char* const* fieldNames, const char* const* fieldValues, uint32_t fieldCount,
                                     int32_t lockStatus, const TarnWideChar* statusMessage, int64_t expiryDate,
                                     char* log);

/*
 * Folds one tracking record into an array of them. Sends nothing, writes no log. Two records are of the same entry
 * when their message ids and their recipients are equal, character by character.
 *
 * entries  in/out: an array with room for one record more than count.
 * count    in/out: how many records the array holds; grows by one when the record is appended.
 * record   in/out: the record to fold in. When it is appended, the array takes over its texts. When it updates an
 *          entry, *record is left holding that entry's former contents: their texts are the caller's to release.
 * Returns  1 when the record was appended, 0 when it updated an entry.
 */
TARN_API int32_t AddOrUpdateRemoteRecipientEntries(TarnRecipientEntry* entries, uint32_t* count,
                                                   TarnRecipientEntry* record);

/* ---- Key server and localized texts -------------------------------------------------------------------------- */

/*
 * Asks what the key server can do, and logs its whole feature table. The three flags are only ever set to 1: the
 * caller clears them first.
 *
 * configFile            in: path of the envelope configuration file; sent even when empty.
 * readByEnabled         out, with status 0: 1 when the server tells when a message was read.
 * expirationSupported   out, with status 0: 1 when the server reports a version, and so can expire messages.
 * localizedTextEnabled  out, with status 0: 1 when the server has localized message texts.
 * Returns               the status code.
 */
TARN_API int32_t GetKeyServerInfo(const TarnWideChar* configFile, uint8_t* readByEnabled, uint8_t* expirationSupported,
                                  uint8_t* localizedTextEnabled, char* log);

/*
 * Asks for the locales that the key server has texts in.
 *
 * configFile  in: path of the envelope configuration file; sent only when not empty.
 * localesOut  out, with status 0: "locale: name; " for each, in the order of the locales.
 * Returns     the status code.
 */
TARN_API int32_t GetSupportedLocales(const TarnWideChar* configFile, TarnWideChar* localesOut, char* log);

/*
 * Asks for the texts that stand around an envelope, in one locale.
 *
 * configFile   in: path of the envelope configuration file; sent only when not empty.
 * locale       in: such as "de"; empty stands for "en".
 * textBodyOut  out, with status 0: the plain text; empty when the server has none in this locale.
 * htmlBodyOut  out, with status 0: the HTML text; empty when the server has none in this locale.
 * Returns      the status code.
 */
TARN_API int32_t GetLocalizedMessageBody(const TarnWideChar* configFile, const char* locale, char* textBodyOut,
                                         char* htmlBodyOut, char* log);

/* ---- Enrollment ---------------------------------------------------------------------------------------------- */

/*
 * Asks which enrollment form applies to an address.
 *
 * emailAddress                 in: the address to enroll.
 * keyServer                    in: the key server's address (URL).
 * locale                       in: sent only when not empty.
 * samlUser                     out, for every reply read: nonzero for a single sign-on user.
 * isOneClickUser               out, for every reply read: nonzero when no form is to be filled in.
 * securityQuestionsNumber      out, for every reply read: how many security questions are to be answered.
 * isSecurityQuestionsEditable  out, for every reply read: nonzero when the user may word the questions.
 * localesOut                   out, for every reply read: the locales to choose from, "locale: name; " for each.
 * securityQuestionsOut         out, for every reply read: the questions to choose from, "id: question; " for each.
 * Returns                      the status code.
 */
TARN_API int32_t GetEnrollParameters(const char* emailAddress, const char* keyServer, const TarnWideChar* locale,
                                     int32_t* samlUser, int32_t* isOneClickUser, int32_t* securityQuestionsNumber,
                                     int32_t* isSecurityQuestionsEditable, TarnWideChar* localesOut,
                                     TarnWideChar* securityQuestionsOut, char* log);

/*
 * Sends a filled-in enrollment form. Password, pass phrase and answers never reach the log.
 *
 * emailAddress          in: the address to enroll.
 * keyServer             in: the key server's address (URL).
 * firstName, lastName   in.
 * password              in: the new account's password.
 * locale                in: sent only when not empty.
 * enrollUuid            in: the enrollment id that GetPayloadStatus returned.
 * senderEmailAddress    in: the sender of the message that waits.
 * isSimpleRegistration  in: the daemon's number (the stand-in daemon: nonzero for no security questions).
 * enrollmentStage       in: the daemon's number (the stand-in daemon: 0 for the form, 1 to confirm it).
 * personalPassPhrase    in: sent only when not empty.
 * securityQuestion1 to securityQuestion3, securityAnswer1 to securityAnswer3   in.
 * timeZone              in: minutes east of UTC.
 * timeFormat            in: logged, not sent.
 * resultOut             out, for every reply read: the daemon's answers, "key: value; " for each.
 * Returns               the status code.
 */
TARN_API int32_t UserEnroll(const char* emailAddress, const char* keyServer, const TarnWideChar* firstName,
                            const TarnWideChar* lastName, const TarnWideChar* password, const TarnWideChar* locale,
                            const char* enrollUuid, const char* senderEmailAddress, int32_t isSimpleRegistration,
                            int32_t enrollmentStage, const TarnWideChar* personalPassPhrase,
                            const TarnWideChar* securityQuestion1, const TarnWideChar* securityQuestion2,
                            const TarnWideChar* securityQuestion3, const TarnWideChar* securityAnswer1,
                            const TarnWideChar* securityAnswer2, const TarnWideChar* securityAnswer3, int32_t timeZone,
                            const char* timeFormat, char* resultOut, char* log);

#undef TARN_ASSERT_LAYOUT

#if defined(__cplusplus)
}
#endif

#endif
