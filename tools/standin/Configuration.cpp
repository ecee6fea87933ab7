#include "Configuration.h"

#include "Limits.h"
#include "Texts.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstring>
#include <fcntl.h>
#include <fstream>
#include <iterator>
#include <set>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>

namespace standin {

namespace {

constexpr std::string_view algorithmFamily = "algorithm.";

const std::set<std::string_view>& knownKeys()
{
    // clang-format off
    static const std::set<std::string_view> keys = {
        "bodytemplate.text.filename", "bodytemplate.text.mimetype", "bodytemplate.text.templateengine",
        "bodytemplate.text.fileencoding", "bodytemplate.html.filename", "bodytemplate.html.mimetype",
        "bodytemplate.html.templateengine", "bodytemplate.html.fileencoding", "inlinehtml", "messagebar.filename",
        "messagebar.mimetype", "messagebar.templateengine", "messagebar.fileencoding", "messagebar.helphost",
        "messagebar.logourl", "messagebar.logohref", "messagebar.securereplyurl", "hostname", "secureport",
        "unsecureport", "internal.url", "external.secure.url", "external.unsecure.url", "passwordexpired.url",
        "keyserver.token", "proxy.filename", "keyserver.host", "keyserver.externalurl", "keyserver.proxy",
        "keyserver.internalurl", "graphic.url", "enrollment.url", "gpt.baseurl", "gpt.token", "gpt.tokenalias",
        "accountid", "authentication.provider", "gpt.enable", "identity", "jceprovider", "lookupname", "masterkeybase",
        "openerhost", "openerurl", "registration.url", "rid", "securereplyhost", "securereplyurl",
        "signerinfo.privatekey", "securereply.token", "authframe.url",
    };
    // clang-format on
    return keys;
}

// An open file that can be asked about but not read: to open it has no effect on a device or a pipe.
class Handle
{
public:
    explicit Handle(const std::filesystem::path& path) : descriptor_(open(path.c_str(), O_PATH | O_CLOEXEC)) {}
    ~Handle()
    {
        if (descriptor_ >= 0) {
            close(descriptor_);
        }
    }
    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;

    bool isRegularFile() const
    {
        struct stat info = {};
        return descriptor_ >= 0 && fstat(descriptor_, &info) == 0 && S_ISREG(info.st_mode);
    }
    // By which the file can be opened for reading, whatever has become of its own path.
    std::filesystem::path alias() const { return "/proc/self/fd/" + std::to_string(descriptor_); }
    // Where it really is, links followed.
    bool isBelow(const std::filesystem::path& folder) const
    {
        const auto place = std::filesystem::read_symlink(alias());
        return std::ranges::mismatch(folder, place).in1 == folder.end();
    }

private:
    int descriptor_;
};

[[noreturn]] void unreadable(const std::string& path, const std::string& why)
{
    throw Refusal{Status::ConfigurationUnreadable, "the configuration file " + path + " cannot be read: " + why};
}

std::string readFile(const std::string& path, const std::optional<std::filesystem::path>& folder)
{
    if (!folder) {
        unreadable(path, "tarn-standin was started without --config-dir");
    }
    const Handle handle(*folder / path);
    // One answer for all: nobody is to learn what there is elsewhere.
    if (path.find('\0') != std::string::npos || !handle.isRegularFile() || !handle.isBelow(*folder)) {
        unreadable(path, "there is no such file in the folder given with --config-dir");
    }
    std::ifstream file(handle.alias(), std::ios::binary);
    if (!file) {
        unreadable(path, std::strerror(errno));
    }
    std::string content(limit::configurationFile + 1, '\0');
    file.read(content.data(), static_cast<std::streamsize>(content.size()));
    content.resize(static_cast<std::size_t>(file.gcount()));
    if (content.size() > limit::configurationFile) {
        unreadable(path, "it is larger than " + std::to_string(limit::configurationFile) + " bytes");
    }
    return content;
}

Configuration parse(std::string_view rest)
{
    if (rest.starts_with("\uFEFF")) {
        rest.remove_prefix(3);
    }
    Configuration configuration;
    for (int number = 1; !rest.empty(); ++number) {
        const auto end = std::min(rest.find('\n'), rest.size());
        const auto line = trimmed(rest.substr(0, end));
        rest.remove_prefix(std::min(end + 1, rest.size()));
        if (line.empty() || line.front() == '#') {
            continue;
        }
        auto& problems = configuration.lineProblems;
        const auto name = "line " + std::to_string(number);
        const auto equals = line.find('=');
        const auto key = trimmed(line.substr(0, equals));
        if (line.size() > limit::configurationLine) {
            problems[name] = "is longer than " + std::to_string(limit::configurationLine) + " bytes";
        } else if (equals == std::string_view::npos || key.empty()) {
            problems[name] = "is not a key=value line";
        } else if (!configuration.values.emplace(key, trimmed(line.substr(equals + 1))).second) {
            problems[name] = "gives " + std::string(key) + " again";
        }
    }
    return configuration;
}

bool isPort(std::string_view text)
{
    int port = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), port);
    return error == std::errc() && end == text.data() + text.size() && port >= 1 && port <= 65535;
}

bool isUrl(std::string_view text)
{
    for (const std::string_view scheme : {"http://", "https://"}) {
        if (text.starts_with(scheme) && text.size() > scheme.size() && text[scheme.size()] != '/') {
            return text.find_first_of(" \t\"<>") == std::string_view::npos;
        }
    }
    return false;
}

// Empty when the value is right for its key.
std::string problemOf(std::string_view key, std::string_view value)
{
    if (!knownKeys().contains(key) && !(key.starts_with(algorithmFamily) && key.size() > algorithmFamily.size())) {
        return "is not a known key";
    }
    if (value.empty()) {
        return "has no value";
    }
    if (key.ends_with("port") && !isPort(value)) {
        return "is not a port number from 1 to 65535";
    }
    if ((key.ends_with("url") || key == "messagebar.logohref") && !isUrl(value)) {
        return "is not an http or https address";
    }
    if ((key.ends_with("host") || key == "hostname") && value.find_first_of(" \t/") != std::string_view::npos) {
        return "is not a host name";
    }
    if ((key == "inlinehtml" || key == "gpt.enable") && value != "true" && value != "false") {
        return "is neither true nor false";
    }
    return {};
}

} // namespace

Configuration namedConfiguration(const Request& request, const Context& context)
{
    const auto& path = request.text(tag("ep"));
    return path.empty() ? Configuration() : parse(readFile(path, context.settings.configurationFolder));
}

StringMap configurationProblems(const Configuration& configuration)
{
    StringMap problems = configuration.lineProblems;
    for (const auto& [key, value] : configuration.values) {
        if (auto problem = problemOf(key, value); !problem.empty()) {
            problems[key] = std::move(problem);
        }
    }
    if (!configuration.values.contains("hostname")) {
        problems["hostname"] = "is missing";
    }
    if (!configuration.values.contains("keyserver.host") && !configuration.values.contains("keyserver.externalurl")) {
        problems["keyserver.host"] = "is missing, and so is keyserver.externalurl";
    }
    return problems;
}

} // namespace standin
