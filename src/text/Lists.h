#pragma once

#include "TarnRemoteClient.h"

#include <string>
#include <string_view>
#include <vector>

namespace Text {

// What separates the items of a list that is returned as one text.
inline constexpr std::string_view listDelimiter = TARN_LIST_DELIMITER;

// Cuts a text at every character that is one of the delimiters. Empty pieces are kept: an empty text is one empty
// piece, and a delimiter at the end leaves an empty piece after it.
std::vector<std::string> splitAny(std::string_view text, std::string_view delimiters);

// Cuts a text at every occurrence of the whole delimiter. Not the same rule: a text without the delimiter has no
// pieces at all, and the rest after the last delimiter counts only when it is not empty.
std::vector<std::string> splitAtText(std::string_view text, std::string_view delimiter);

// A list that grows item by item, with a delimiter between its items.
class JoinedList
{
public:
    explicit JoinedList(std::string_view delimiter) : delimiter_(delimiter) {}

    void append(std::string_view item);
    const std::string& text() const { return text_; }

private:
    std::string_view delimiter_;
    std::string text_;
    bool empty_ = true;
};

} // namespace Text
