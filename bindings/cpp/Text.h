#pragma once

#include <TarnRemoteClient.h>
#include <string>
#include <string_view>
#include <tarn/Types.h>
#include <vector>

namespace tarn::detail {

// Ill-formed input becomes U+FFFD. The wide text, which may be a secret, has its terminator.
ClearedVector<TarnWideChar> toWide(std::string_view utf8);
std::string toUtf8(std::basic_string_view<TarnWideChar> wide);

std::vector<std::string> split(std::string_view text, std::string_view delimiter);

// The library's map texts: "key: value; " for each entry.
std::vector<KeyValue> parseMapText(std::string_view text);

// The forms in which texts go to the library. It would cut a text at a zero character: such a text is refused. These
// are temporary objects that live as long as the call.
void refuseZero(std::string_view text);

class Narrow
{
public:
    template <class Text> // a std::string or a Secret
    explicit Narrow(const Text& text) : text_(text.c_str())
    {
        refuseZero(text);
    }
    operator const char*() const { return text_; }

private:
    const char* text_;
};

class Wide
{
public:
    explicit Wide(std::string_view text) : text_(toWide(text)) { refuseZero(text); }
    operator const TarnWideChar*() const { return text_.data(); }

private:
    ClearedVector<TarnWideChar> text_;
};

// Addresses with ";" between them, which no address may hold.
std::string addressList(const std::vector<std::string>& addresses);

// Returns the text, but refuses one that the library would later return within a list, where it would look like two.
const std::string& refuseListDelimiter(const std::string& text);

} // namespace tarn::detail
