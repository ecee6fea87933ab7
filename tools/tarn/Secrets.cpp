#include "Secrets.h"

#include "Failure.h"
#include "Files.h"
#include "Host.h"
#include "Text.h"
#include <algorithm>
#include <iterator>
#include <utf8.h>

namespace tarn {

using host::Echo;

namespace {

std::optional<Secret> askTwice(const std::string& question)
{
    for (;;) {
        const auto first = host::ask(question + ": ", Echo::hidden);
        if (!first) {
            return std::nullopt;
        }
        auto second = host::ask(question + " (again): ", Echo::hidden);
        if (!second || std::string_view(*first) == std::string_view(*second)) {
            return second;
        }
        if (!host::ask("The two differ. Press Enter to try again. ", Echo::shown)) {
            return std::nullopt;
        }
    }
}

// The UTF-8 of a text file's bytes.
ClearedVector<char> decode(ClearedVector<char> bytes)
{
    const std::string_view view(bytes.data(), bytes.size());
    if (view.starts_with("\xEF\xBB\xBF")) {
        return {bytes.begin() + 3, bytes.end()};
    }
    const bool littleEndian = view.starts_with("\xFF\xFE");
    if (!littleEndian && !view.starts_with("\xFE\xFF")) {
        return bytes;
    }
    ClearedVector<char16_t> units;
    for (std::size_t i = 2; i + 1 < bytes.size(); i += 2) {
        const auto low = static_cast<unsigned char>(bytes[littleEndian ? i : i + 1]);
        const auto high = static_cast<unsigned char>(bytes[littleEndian ? i + 1 : i]);
        units.push_back(static_cast<char16_t>(low | high << 8));
    }
    ClearedVector<char> text;
    utf8::utf16to8(units.begin(), units.end(), std::back_inserter(text));
    return text;
}

} // namespace

std::vector<Secret> secretLines(const std::string& file)
{
    const auto text = decode(readConfidentialFile(file));
    std::string_view rest(text.data(), text.size());
    refuseUnfitText(file, rest);
    std::vector<Secret> lines;
    while (!rest.empty()) {
        auto line = rest.substr(0, rest.find('\n'));
        rest.remove_prefix(std::min(line.size() + 1, rest.size()));
        if (line.ends_with('\r')) {
            line.remove_suffix(1);
        }
        lines.emplace_back(line);
    }
    return lines;
}

Secret readSecret(const SecretSource& source)
{
    if (!source.file.empty()) {
        return secretLines(source.file).front();
    }
    if (auto value = host::environment(source.variable)) {
        return std::move(*value);
    }
    auto answer = source.confirm ? askTwice(source.question) : host::ask(source.question + ": ", Echo::hidden);
    if (!answer && !source.optional) {
        throw Failure(Exit::usage, "no answer to \"" + source.question + "\": run tarn at a terminal, give " +
                                       source.fileOption + " FILE or set " + source.variable);
    }
    return std::move(answer).value_or(Secret());
}

Secret password(const std::string& file, const std::string& user)
{
    return readSecret(
        {file, "--password-file", "TARN_PASSWORD", user.empty() ? "Password" : "Password of " + printable(user)});
}

std::string askUnlessGiven(const std::string& given, const std::string& option, const std::string& question)
{
    if (!given.empty()) {
        return given;
    }
    const auto answer = host::ask(question + ": ", Echo::shown);
    if (!answer) {
        throw Failure(Exit::usage, "no answer to \"" + question + "\": run tarn at a terminal or give " + option);
    }
    return std::string(*answer);
}

} // namespace tarn
