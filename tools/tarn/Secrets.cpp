#include "Secrets.h"

#include "Failure.h"
#include "Files.h"
#include "Host.h"
#include "Text.h"

namespace tarn {

using host::Echo;

namespace {

std::optional<std::string> askTwice(const std::string& question)
{
    for (;;) {
        const auto first = host::ask(question + ": ", Echo::hidden);
        const auto second = first ? host::ask(question + " (again): ", Echo::hidden) : std::nullopt;
        if (!second || *first == *second) {
            return second;
        }
        if (!host::ask("The two differ. Press Enter to try again. ", Echo::shown)) {
            return std::nullopt;
        }
    }
}

} // namespace

std::vector<std::string> readLines(const std::string& file)
{
    std::string content = utf8Of(readFile(file));
    refuseUnfitText(file, content);
    if (content.ends_with('\n')) {
        content.pop_back();
    }
    auto lines = split(content, "\n");
    for (auto& line : lines) {
        if (line.ends_with('\r')) {
            line.pop_back();
        }
    }
    return lines;
}

std::string secret(const SecretSource& source)
{
    if (!source.file.empty()) {
        return readLines(source.file).front();
    }
    if (const auto value = host::environment(source.variable.c_str())) {
        return *value;
    }
    const auto answer = source.confirm ? askTwice(source.question) : host::ask(source.question + ": ", Echo::hidden);
    if (!answer && source.optional) {
        return "";
    }
    if (!answer) {
        throw Failure(Exit::usage, "no answer to \"" + source.question + "\": run tarn at a terminal, give " +
                                       source.fileOption + " FILE or set " + source.variable);
    }
    return *answer;
}

std::string password(const std::string& file, const std::string& user)
{
    return secret({file, "--password-file", "TARN_PASSWORD", user.empty() ? "Password" : "Password of " + user});
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
    return *answer;
}

} // namespace tarn
