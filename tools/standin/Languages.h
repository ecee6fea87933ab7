#pragma once

#include <span>
#include <string>
#include <string_view>

namespace standin {

// The texts around an envelope, in one language.
struct Language
{
    std::string_view locale;
    std::string_view name; // in its own script
    std::string_view direction;
    std::string_view from;
    std::string_view subject;
    std::string_view body;
};

std::span<const Language> languages();

// The language of a locale such as de or de_AT; English where there is none.
const Language& languageOf(std::string_view locale);

// As plain text and as HTML, with sender and subject above when a sender is given.
std::string plainBody(const Language& text, std::string_view sender = {}, std::string_view subject = {});
std::string htmlBody(const Language& text, std::string_view sender = {}, std::string_view subject = {});

} // namespace standin
