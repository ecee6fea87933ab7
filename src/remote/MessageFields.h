#pragma once

#include <string_view>

// The names of the message-information fields, in the daemon's order: the keys of the maps that message tracking
// exchanges with it.
namespace Merrow::Field {

inline constexpr std::string_view id = "id";
inline constexpr std::string_view msgId = "msgId";
inline constexpr std::string_view to = "to";
inline constexpr std::string_view from = "from";
inline constexpr std::string_view subject = "subject";
inline constexpr std::string_view createDate = "createDate";
inline constexpr std::string_view recipient = "recipient";
inline constexpr std::string_view statusLocked = "statusLocked";
inline constexpr std::string_view statusRecipReset = "statusRecipReset";
inline constexpr std::string_view statusSenderReset = "statusSenderReset";
inline constexpr std::string_view numTries = "numTries";
inline constexpr std::string_view notifyAction = "notifyAction";
inline constexpr std::string_view notifyStatus = "notifyStatus";
inline constexpr std::string_view recipientCount = "recipientCount";
inline constexpr std::string_view expiryDate = "expiryDate";
inline constexpr std::string_view lastOpenDate = "lastOpenDate";
inline constexpr std::string_view lastFailOpenDate = "lastFailOpenDate";
inline constexpr std::string_view readByDate = "readByDate";
inline constexpr std::string_view deletedDate = "deletedDate";
inline constexpr std::string_view firstOpenDate = "firstOpenDate";
inline constexpr std::string_view statusMsg = "statusMsg";
inline constexpr std::string_view authName = "authName";
inline constexpr std::string_view randomKey = "randomKey";
inline constexpr std::string_view password = "password";
inline constexpr std::string_view trackingId = "trackingId";
inline constexpr std::string_view tokenId = "tokenId";
inline constexpr std::string_view senderId = "senderId";
inline constexpr std::string_view senderAuthed = "senderAuthed";
inline constexpr std::string_view sensitivity = "sensitivity";
inline constexpr std::string_view msgSignature = "msgSignature";
inline constexpr std::string_view messageSource = "messageSource";
inline constexpr std::string_view recipientType = "recipientType";
inline constexpr std::string_view messageSize = "messageSize";
inline constexpr std::string_view attachmentCount = "attachmentCount";
inline constexpr std::string_view messageHash = "messageHash";
inline constexpr std::string_view lastModifiedDate = "lastModifiedDate";
inline constexpr std::string_view flags = "FLAGS"; // the only name in capitals
inline constexpr std::string_view epoch = "Epoch";
inline constexpr std::string_view sortBy = "sortBy";
inline constexpr std::string_view ascending = "ascending";
inline constexpr std::string_view startAt = "startAt";
inline constexpr std::string_view numResults = "numResults";

} // namespace Merrow::Field
