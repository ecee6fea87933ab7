/*
 * TarnRemoteClient: the native client library of the secure-mail plug-in.
 *
 * Every call is forwarded to the daemon, a local program on TCP port 53007 of the loopback interface. The library
 * itself encrypts nothing. These conventions hold for all functions; a function's own comment adds only what is its
 * own. Where the daemon decides what a value means, the comments give the stand-in daemon's meaning in parentheses.
 *
 * Language C99 or C++11, or later.
 *
 * Calls    Plain C functions, __cdecl on Windows. No exception leaves them.
 *
 * Threads  One call at a time, all calls from one thread or serialized by the caller. The connection, the operation
 *          log, the client version text and the decrypted items are process-wide and not guarded.
 *
 * Waiting  Calls block until the daemon has answered; there is no time limit. A daemon that closes the connection
 *          in an orderly way while its reply is awaited leaves the call waiting for ever. A reset connection ends
 *          the call with its failure value.
 *
 * Connection  The first call that needs the daemon connects; later calls reuse the connection. Only StopTarnDaemon
 *          closes it, once the daemon has answered. A connection that broke is not replaced: after a reset, or when the
 *          daemon was restarted, all further calls of the process fail or wait. A failed attempt to connect leaves its
 *          socket open until the process ends: a caller that waits for the daemon to come up should try with a socket
 *          of its own, and call the library once that connects.
 *
 * Out of step  After a failure while a reply is read, bytes of that reply may still be on the connection. The next
 *          calls then take them for their own replies, and can report success for something that the daemon refused.
 *          Nothing brings the connection back into step, StopTarnDaemon included. A call that failed after it had
 *          connected must therefore be the last one of its process.
 *
 * Text     `const char *` is a zero-terminated text sent to the daemon byte for byte (the daemon expects UTF-8);
 *          null is sent as an empty text unless the function says "not null". `const TarnWideChar *` is a
 *          zero-terminated UTF-16 text, sent as UTF-8; null counts as empty. Ill-formed UTF-16 or UTF-8 is replaced
 *          by U+FFFD in a conversion and never fails a call.
 *
 * Results  Output texts are written with their terminator and WITHOUT A BOUND: the caller supplies buffers that
 *          hold whatever the daemon may send. 8-bit output texts are UTF-8 as received. Every output text ends at its
 *          first zero character, even if the daemon sent more. Output pointers must not be null unless the function
 *          allows it. An output that a function's comment does not name for an outcome keeps its former contents.
 *
 * Lists    Several texts returned as one are joined with TARN_LIST_DELIMITER between them, never after the last; a text
 *          that holds the delimiter itself cannot be told from two. Recipient lists of the caller are one text with ";"
 *          between the items; an empty text is one empty item.
 *
 * Memory   Buffers belong to the caller. What the library allocates for the caller is task memory: released with
 *          CoTaskMemFree on Windows, with free elsewhere. The library keeps no pointer of the caller's.
 *
 * Flags    One byte, 0 or 1; any nonzero byte given counts as 1.
 *
 * Status   A status code is the daemon's signed 16-bit number, 0 for success, widened with its sign (TarnStatus names
 *          those that the library tells apart). -1 means that no reply was read, that the reply had no status, or that
 *          the daemon's own status was -1. After a failure in the middle of a call (connection, protocol, memory) a
 *          function returns the last status it had read, unless its comment says otherwise.
 *
 * Log      `log` is a buffer of at least TARN_LOG_SIZE bytes, not null, that receives the operation log of this
 *          call: lines "[TarnRemoteClient:LINE] MESSAGE" ended by "\n". Some messages contain a line feed: the rest of
 *          them is on a line without prefix. A zero character in a logged text ends the log there. The log names most
 *          values sent and received but never a password, pass phrase or security answer of the caller. A failed
 *          call logs "Unexpected exception occured. GetLastError() : " and the system's error number as its last line.
 *
 * Log size  A log that does not fit TARN_LOG_SIZE bytes with its terminator ENDS THE PROCESS (as the run-time's bounded
 *          string copy does on an overflow), and so does a null log buffer. Callers therefore bound what they pass.
 *          Each line that holds a text of the caller's takes fewer than TARN_LOG_LINE_SIZE bytes besides that text;
 *          TARN_LOG_RESERVE is what an estimate should leave for all other lines, a failure's included, and for the
 *          daemon's status message. The functions say what else grows their log.
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

#if defined(_WIN32)
#define TARN_CALL __cdecl
#else
#define TARN_CALL
#endif

#define TARN_REMOTE_CLIENT_VERSION_MAJOR 7
#define TARN_REMOTE_CLIENT_VERSION_MINOR 6
#define TARN_REMOTE_CLIENT_VERSION_PATCH 1
#define TARN_REMOTE_CLIENT_VERSION_TWEAK 7
#define TARN_REMOTE_CLIENT_VERSION "7.6.1.7"

#define TARN_LIST_DELIMITER "{plugin_delimiter}"

#define TARN_LOG_SIZE 32766
#define TARN_LOG_LINE_SIZE 64
#define TARN_LOG_RESERVE 8192

/*
 * The status codes that the library itself tells apart. A daemon may answer with others; the functions return numbers.
 * GetPayloadStatus goes on to its next recipient after any status from 5 to 34 that has a name here.
 */
enum TarnStatus {
    TARN_STATUS_NONE = -1, /* see "Status" above */
    TARN_STATUS_OK = 0,
    TARN_STATUS_WRONG_PASSWORD = 2, /* wrong credentials, as 17 and 200 */
    TARN_STATUS_PASSWORD_NEEDED = 5,
    TARN_STATUS_SESSION_KEY_ALIVE = 6,
    TARN_STATUS_ASKED_BY_SENDER = 7,
    TARN_STATUS_NOT_ENROLLED = 11, /* with an enrollment id and the sender */
    TARN_STATUS_NOT_A_RECIPIENT = 15,
    TARN_STATUS_UNKNOWN_ENVELOPE = 16,
    TARN_STATUS_ACCOUNT_DISABLED = 17, /* wrong credentials */
    TARN_STATUS_TOO_MANY_TRIES = 18,   /* with a number */
    TARN_STATUS_EXPIRED = 19,
    TARN_STATUS_LOCKED_WITH_MESSAGE = 20, /* with a message */
    TARN_STATUS_LOCKED = 21,
    TARN_STATUS_ENROLLMENT_UNFINISHED = 25, /* with a text for the user, an enrollment id and the sender */
    TARN_STATUS_DAMAGED_ENVELOPE = 26,
    TARN_STATUS_NO_ENVELOPE = 34,
    TARN_STATUS_SESSION_KEY_INVALID = 200 /* wrong credentials */
};

/*
 * One tracking record: what the daemon knows about one recipient of one sent message. 72 bytes on 32-bit and 64-bit
 * systems alike: each pointer is in an 8-byte slot. Dates and the expiry are the daemon's own numbers, passed on
 * as they are (stand-in: milliseconds since 1970-01-01 UTC; 0 means "not set").
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

#undef TARN_TEXT_SLOT

#define TARN_FLAG_LOCKED 2

#if defined(__cplusplus)
#define TARN_ASSERT_LAYOUT(condition) static_assert(condition, #condition)
extern "C" {
#elif __STDC_VERSION__ >= 201112L
#define TARN_ASSERT_LAYOUT(condition) _Static_assert(condition, #condition)
#else
#define TARN_ASSERT_LAYOUT(condition) struct TarnRecipientEntry
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
TARN_API uint8_t TARN_CALL StartTarnDaemon(const char* jarDaemon, char* log);

/*
 * Asks the daemon to stop and closes the connection once it has answered, whatever the answer.
 *
 * Returns  1 when the daemon answered with status 0, else 0. When the daemon could not be reached, or its reply could
 *          not be read, the result is 0 and the connection is left as it is: open, and out of step.
 */
TARN_API uint8_t TARN_CALL StopTarnDaemon(char* log);

/*
 * Asks the daemon for its version and logs its memory figures in bytes (their low 32 bits, as a signed number).
 * Also builds the client version text that most other calls send: a client that never calls this sends it empty.
 *
 * version  out: with status 0, the daemon's version, "-" and its build number, such as 7.6.1-42.
 * Returns  the status code.
 */
TARN_API int32_t TARN_CALL GetTarnVersion(char* version, char* log);

/* ---- Authentication and configuration check ------------------------------------------------------------------ */

/*
 * Logs a user in.
 *
 * emailAddress  in, not null: the user's address.
 * password      in, not null.
 * configFile    in: path of the envelope configuration file; sent only when not empty.
 * result        out, written for every reply read: with status 25 a text of the daemon's for the user, with status 18
 *               a number of the daemon's in decimal, else an empty text. (Stand-in: a link to enroll by,
 *               the seconds to wait.)
 * Returns       the status code. A failed call logs "Unknown exception occured, setting status to -1. GetLastError()
 *               : " instead of the usual line.
 */
TARN_API int32_t TARN_CALL AuthenticateUser(const char* emailAddress, const char* password,
                                            const TarnWideChar* configFile, char* result, char* log);

/*
 * Asks the daemon to check the configuration that belongs to a sender.
 *
 * sender      in, not null: the sender's address.
 * configFile  in: path of the envelope configuration file; sent only when not empty.
 * Returns     the status code; -1 after any failure, even one after the status was read; 0 when there was no memory
 *             for the reply.
 */
TARN_API int32_t TARN_CALL VerifyLarchConfig(const char* sender, const TarnWideChar* configFile, char* log);

/* ---- Online encryption --------------------------------------------------------------------------------------- */

/*
 * Turns a MIME message into an encrypted envelope. Unless it is suppressed a login comes first, on the same
 * connection.
 *
 * toList, ccList, bccList  in: recipients, ";" between them. Each adds its address and fewer than 50 bytes to the log.
 * from                     in: the sender's address, also the user name of the login.
 * password                 in: the sender's password, used by the login alone.
 * mimeMessage              in: the whole message, ended by its first zero byte.
 * configFile               in: path of the envelope configuration file; sent only when not empty.
 * envelopeOut              out, written with envelope status 0 alone: the envelope.
 * textBodyOut, htmlBodyOut, attachmentNameOut
 *                          out, likewise: three texts that go with it. (Stand-in: the plain and the HTML text of the
 *                          mail that carries the envelope, and the name of the file that it is attached as.)
 * encodedEnvelopeConfig    in: an envelope configuration as DecryptEnvelope returns it (each byte as a signed decimal
 *                          number followed by "&"), or empty. When not empty, no login takes place. Entries with an
 *                          empty value, or with ": " in it, do not come through as they are.
 * loginFlag                in: "0" suppresses the login, any other text does not.
 * log                      out: NOT written when the login is answered with a nonzero status.
 * Returns                  the last status code obtained: the login's when that is not 0, else the envelope's. A
 *                          failure while the envelope is built after a successful login returns the login's 0, with
 *                          the failure line in the log and no output written.
 */
TARN_API int32_t TARN_CALL EncryptEnvelopeOnline(const char* toList, const char* ccList, const char* bccList,
                                                 const char* from, const char* password, const char* mimeMessage,
                                                 const TarnWideChar* configFile, TarnWideChar* envelopeOut,
                                                 TarnWideChar* textBodyOut, TarnWideChar* htmlBodyOut,
                                                 TarnWideChar* attachmentNameOut, const char* encodedEnvelopeConfig,
                                                 const char* loginFlag, char* log);

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
 *             decimal number followed by "&" (up to five bytes for each byte of that text). The same text is logged in
 *             plain, whatever secrets the configuration holds (tokens, private keys), and must fit the log.
 * keepOpen    in: a flag that is passed on to the daemon when set.
 * kuOut       out, with status 0: the payload's key text. (Stand-in: with keepOpen, a session key that opens the
 *             envelope again without the password.)
 * fromOut     out, with status 0: the sender's address.
 * Returns     the status code. 2, 17 and 200 mean wrong credentials.
 */
TARN_API int32_t TARN_CALL DecryptEnvelope(const char* password, const char* envelope, const TarnWideChar* configFile,
                                           const char* recipient, const char* sessionKey, char* configOut,
                                           uint8_t keepOpen, TarnWideChar* kuOut, TarnWideChar* fromOut, char* log);

/*
 * Tells the sizes of the next decrypted item and stays at it. Writes no log.
 *
 * nameSize           out: bytes of its name; 0 when there is no next item.
 * contentTypeLength  out: bytes of its content type, without the terminator; not written when there is no next item.
 * dataSize           out: bytes of its data; 0 when there is no next item.
 * Returns            1, or 0 when there is no next item.
 */
TARN_API uint32_t TARN_CALL GetNextDecryptedItemInfo(uint32_t* nameSize, uint32_t* contentTypeLength,
                                                     uint32_t* dataSize);

/*
 * Hands out the next decrypted item and moves on to the one after it. Writes no log. Nothing is written when there is
 * no next item. GetNextDecryptedItemInfo tells how large the buffers must be.
 *
 * flags, type        out: the item's two numbers.
 * nameBuffer         out, nameSize bytes: the name (UTF-8), WITHOUT a terminator; not touched by an empty name.
 * contentTypeBuffer  in/out, an initialised text: the content type is APPENDED to it, with a terminator. It needs room
 *                    for contentTypeLength + 1 bytes after what it holds.
 * dataBuffer         out, dataSize bytes: the data, without a terminator; not touched by an empty item.
 * Returns            1, or 0 when there is no next item.
 */
TARN_API uint32_t TARN_CALL GetNextDecryptedItem(uint32_t* flags, uint32_t* type, uint8_t* nameBuffer,
                                                 char* contentTypeBuffer, uint8_t* dataBuffer);

/*
 * Asks for the status of an envelope, recipient by recipient, without decrypting it. Its log is copied nowhere.
 *
 * envelope        in: the envelope text; sent only when not empty.
 * configFile      in: path of the envelope configuration file; sent only when not empty.
 * recipientList   in: recipients, ";" between them.
 * statusTextsOut  out: one text for each recipient, as a list: for the statuses 11 and 25 the daemon's text for the
 *                 user, for 20 its message, for 18 its number (stand-in: the seconds to wait); else empty.
 * enrollIdOut     out, with a status 11 or 25: the enrollment id (of the last such recipient).
 * fromOut         out, with a status 11 or 25: the sender's address (likewise).
 * statusCodesOut  out: the status codes in decimal, ";" between them.
 * sensitivity     out: the message's sensitivity, -1 until a reply was read.
 *
 * A status other than 5, 6, 7, 11, 15 to 21, 25, 26 and 34 ends the walk after its recipient: the lists hold the
 * recipients up to it. After a failure the two lists are not written.
 * Returns         the last status code read.
 */
TARN_API int32_t TARN_CALL GetPayloadStatus(const char* envelope, const TarnWideChar* configFile,
                                            const char* recipientList, TarnWideChar* statusTextsOut, char* enrollIdOut,
                                            char* fromOut, char* statusCodesOut, int32_t* sensitivity);

/*
 * Asks for the recipients and the sensitivity of an envelope without decrypting it.
 *
 * envelope        in: the envelope text; sent only when not empty.
 * recipientsOut   out, for every reply read: the To and then the Cc recipients, each followed by ";".
 * sensitivityOut  out, for every reply read: the message's sensitivity.
 * Returns         the status code.
 */
TARN_API int32_t TARN_CALL GetRecipients(const char* envelope, TarnWideChar* recipientsOut, uint32_t* sensitivityOut,
                                         char* log);

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
 * With a nonzero status the four lists are empty texts and the count is 0. With status 0 each recipient in the reply
 * adds fewer than 50 bytes to the log: 700 of them fit, 800 end the process.
 * Returns            the status code.
 */
TARN_API int32_t TARN_CALL GetLockExpireStatus(const char* password, const char* envelope,
                                               const TarnWideChar* configFile, char* recipientsOut,
                                               char* lockStatusesOut, TarnWideChar* statusMessagesOut,
                                               char* expiryDatesOut, char* messageIdOut, uint32_t* recipientCount,
                                               char* log);

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
 * count           in: how many recipients; with 0 nothing is sent and the result is -1. Each adds up to 520 bytes to
 *                 the log, and the bytes of configFile, of the client version text and of the daemon's message.
 * Returns         the status code of the last exchange. A failure ends the walk and leaves the recipients before it
 *                 as they were set.
 */
TARN_API int32_t TARN_CALL SetLockExpireStatus(const char* password, const char* envelope,
                                               const TarnWideChar* configFile, const char* const* recipients,
                                               const int32_t* lockStatuses, const TarnWideChar* const* statusMessages,
                                               const int64_t* expiryDates, uint32_t count, char* log);

/*
 * Lists the tracking records of a user's sent messages, a page at a time.
 *
 * userName    in: the sender's address; sent only when not empty.
 * password    in: sent only when not empty.
 * configFile  in: path of the envelope configuration file; sent only when not empty.
 * entries     out: null from the start. With status 0 an array in task memory, one record for each distinct pair of
 *             message id and recipient; the array and the texts in it belong to the caller. An array without records
 *             (entryCount 0) is not null and must be released too.
 * startAt     in: index of the first record wanted (stand-in: counted from 0).
 * maxResults  in, not null, only read: how many records are wanted.
 * entryCount  out: 0 from the start; with status 0 how many records the array holds.
 * totalCount  out: 0 from the start; for every reply read how many records there are in all.
 * sortBy      in: name of the field to sort by, such as "createDate"; sent only when not empty.
 * ascending   in: a flag.
 * Returns     the status code.
 */
TARN_API int32_t TARN_CALL GetRecipientEntries(const char* userName, const char* password,
                                               const TarnWideChar* configFile, TarnRecipientEntry** entries,
                                               uint32_t startAt, const uint32_t* maxResults, uint32_t* entryCount,
                                               uint32_t* totalCount, const char* sortBy, uint8_t ascending, char* log);

/*
 * Sets lock, status message and expiry of tracking records, given a map of field values. (Stand-in: the records in
 * which all these fields have these values.)
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
TARN_API int32_t TARN_CALL SetRecipientEntries(const char* password, const TarnWideChar* configFile,
                                               const char* const* fieldNames, const char* const* fieldValues,
                                               uint32_t fieldCount, int32_t lockStatus,
                                               const TarnWideChar* statusMessage, int64_t expiryDate, char* log);

/*
 * Folds one tracking record into an array of them. Sends nothing, writes no log. Two records are of the same entry
 * when their message ids and their recipients are equal, character by character; a null text counts as an empty one.
 *
 * entries  in/out: an array with room for one record more than count.
 * count    in/out: how many records the array holds; grows by one when the record is appended.
 * record   in/out: the record to fold in. When it is appended, the array takes over its texts. When it updates an
 *          entry, *record is left holding that entry's former contents: their texts are the caller's to release.
 * Returns  1 when the record was appended, 0 when it updated an entry.
 */
TARN_API int32_t TARN_CALL AddOrUpdateRemoteRecipientEntries(TarnRecipientEntry* entries, uint32_t* count,
                                                             TarnRecipientEntry* record);

/* ---- Key server and localized texts -------------------------------------------------------------------------- */

/*
 * Asks what the key server can do. With status 0 its whole feature table is logged, with fewer than 30 bytes for each
 * entry besides its key and value. The three flags are only ever set to 1: the caller clears them first.
 *
 * configFile            in: path of the envelope configuration file; sent even when empty.
 * readByEnabled         out, with status 0: 1 when the server tells when a message was read.
 * expirationSupported   out, with status 0: 1 when the server reports a version, and so can expire messages.
 * localizedTextEnabled  out, with status 0: 1 when the server has localized message texts.
 * Returns               the status code.
 */
TARN_API int32_t TARN_CALL GetKeyServerInfo(const TarnWideChar* configFile, uint8_t* readByEnabled,
                                            uint8_t* expirationSupported, uint8_t* localizedTextEnabled, char* log);

/*
 * Asks for the locales that the key server has texts in.
 *
 * configFile  in: path of the envelope configuration file; sent only when not empty.
 * localesOut  out, with status 0: "key: value; " for each entry of the reply, in the order of the keys (stand-in: a
 *             locale and its name).
 * Returns     the status code.
 */
TARN_API int32_t TARN_CALL GetSupportedLocales(const TarnWideChar* configFile, TarnWideChar* localesOut, char* log);

/*
 * Asks for the texts of the mail that carries an envelope, in one locale.
 *
 * configFile   in: path of the envelope configuration file; sent only when not empty.
 * locale       in: such as "de"; empty means "en".
 * textBodyOut  out, with status 0: the plain text; empty when the server has none in this locale.
 * htmlBodyOut  out, with status 0: the HTML text; empty when the server has none in this locale.
 * Returns      the status code.
 */
TARN_API int32_t TARN_CALL GetLocalizedMessageBody(const TarnWideChar* configFile, const char* locale,
                                                   char* textBodyOut, char* htmlBodyOut, char* log);

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
 * localesOut                   out, for every reply read: the locales to choose from, "key: value; " for each
 *                              (stand-in: a locale and its name).
 * securityQuestionsOut         out, for every reply read: the questions to choose from, "id: question; " for each.
 * Returns                      the status code.
 */
TARN_API int32_t TARN_CALL GetEnrollParameters(const char* emailAddress, const char* keyServer,
                                               const TarnWideChar* locale, int32_t* samlUser, int32_t* isOneClickUser,
                                               int32_t* securityQuestionsNumber, int32_t* isSecurityQuestionsEditable,
                                               TarnWideChar* localesOut, TarnWideChar* securityQuestionsOut, char* log);

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
 * isSimpleRegistration  in: the daemon's number (stand-in: nonzero for no security questions).
 * enrollmentStage       in: the daemon's number (stand-in: 0 for the form, 1 to confirm it).
 * personalPassPhrase    in: sent only when not empty.
 * securityQuestion1 to securityQuestion3, securityAnswer1 to securityAnswer3   in.
 * timeZone              in: the daemon's number (stand-in: minutes east of UTC).
 * timeFormat            in: logged, not sent.
 * resultOut             out, for every reply read: the daemon's answers, "key: value; " for each. The same text is
 *                       logged, whatever secrets it holds, and must fit the log.
 * Returns               the status code.
 */
TARN_API int32_t TARN_CALL UserEnroll(const char* emailAddress, const char* keyServer, const TarnWideChar* firstName,
                                      const TarnWideChar* lastName, const TarnWideChar* password,
                                      const TarnWideChar* locale, const char* enrollUuid,
                                      const char* senderEmailAddress, int32_t isSimpleRegistration,
                                      int32_t enrollmentStage, const TarnWideChar* personalPassPhrase,
                                      const TarnWideChar* securityQuestion1, const TarnWideChar* securityQuestion2,
                                      const TarnWideChar* securityQuestion3, const TarnWideChar* securityAnswer1,
                                      const TarnWideChar* securityAnswer2, const TarnWideChar* securityAnswer3,
                                      int32_t timeZone, const char* timeFormat, char* resultOut, char* log);

#undef TARN_ASSERT_LAYOUT

#if defined(__cplusplus)
}
#endif

#endif
