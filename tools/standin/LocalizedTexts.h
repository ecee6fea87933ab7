#pragma once

#include <span>
#include <string>
#include <string_view>

namespace standin {

// The texts that stand around an envelope, in one language.
struct LocalizedText
{
    std::string_view locale;
    std::string_view name; // of the language, in its own script
    std::string_view direction;
    std::string_view from;
    std::string_view subject;
    std::string_view body;
};

std::span<const LocalizedText> allLocalizedTexts();

// The language of a locale such as de or de_AT; English for one that is not there.
const LocalizedText& localizedText(std::string_view locale);

// As plain text and as HTML, with sender and subject above when a sender is given.
std::string plainBody(const LocalizedText& text, std::string_view sender = {}, std::string_view subject = {});
std::string htmlBody(const LocalizedText& text, std::string_view sender = {}, std::string_view subject = {});

} // namespace standin
