#include "text/Lists.h"

namespace Text {

std::vector<std::string> splitAny(std::string_view text, std::string_view delimiters)
{
    std::vector<std::string> pieces;
    std::size_t start = 0;
    while (true) {
        const std::size_t end = text.find_first_of(delimiters, start);
        pieces.emplace_back(text.substr(start, end - start));
        if (end == std::string_view::npos) {
            return pieces;
        }
        start = end + 1;
    }
}

std::vector<std::string> splitAtText(std::string_view text, std::string_view delimiter)
{
    std::vector<std::string> pieces;
    std::size_t start = 0;
    for (std::size_t end = text.find(delimiter); end != std::string_view::npos; end = text.find(delimiter, start)) {
        pieces.emplace_back(text.substr(start, end - start));
        start = end + delimiter.size();
    }
    if (!pieces.empty() && start < text.size()) {
        pieces.emplace_back(text.substr(start));
    }
    return pieces;
}

void JoinedList::append(std::string_view item)
{
    if (!empty_) {
        text_ += delimiter_;
    }
    text_ += item;
    empty_ = false;
}

} // namespace Text
