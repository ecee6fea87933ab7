#include "Configuration.h"

#include "Status.h"
#include "Texts.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace standin {

namespace {

constexpr std::size_t maxFileSize = 1 << 20;

constexpr std::string_view algorithmFamily = "algorithm.";

constexpr std::array<std::string_view, 51> knownKeys = {"bodytemplate.text.filename",
                                                        "bodytemplate.text.mimetype",
                                                        "bodytemplate.text.templateengine",
                                                        "bodytemplate.text.fileencoding",
                                                        "bodytemplate.html.filename",
                                                        "bodytemplate.html.mimetype",
                                                        "bodytemplate.html.templateengine",
                                                        "bodytemplate.html.fileencoding",
                                                        "inlinehtml",
                                                        "messagebar.filename",
                                                        "messagebar.mimetype",
                                                        "messagebar.templateengine",
                                                        "messagebar.fileencoding",
                                                        "messagebar.helphost",
                                                        "messagebar.logourl",
                                                        "messagebar.logohref",
                                                        "messagebar.securereplyurl",
                                                        "hostname",
                                                        "secureport",
                                                        "unsecureport",
                                                        "internal.url",
                                                        "external.secure.url",
                                                        "external.unsecure.url",
                                                        "passwordexpired.url",
                                                        "keyserver.token",
                                                        "proxy.filename",
                                                        "keyserver.host",
                                                        "keyserver.externalurl",
                                                        "keyserver.proxy",
                                                        "keyserver.internalurl",
                                                        "graphic.url",
                                                        "enrollment.url",
                                                        "gpt.baseurl",
                                                        "gpt.token",
                                                        "gpt.tokenalias",
                                                        "accountid",
                                                        "authentication.provider",
                                                        "gpt.enable",
                                                        "identity",
                                                        "jceprovider",
                                                        "lookupname",
                                                        "masterkeybase",
                                                        "openerhost",
                                                        "openerurl",
                                                        "registration.url",
                                                        "rid",
                                                        "securereplyhost",
                                                        "securereplyurl",
                                                        "signerinfo.privatekey",
                                                        "securereply.token",
                                                        "authframe.url"};

[[noreturn]] void unreadable(const std::string& path, const std::string& why)
{
    throw Refusal{Status::ConfigurationUnreadable, "the configuration file " + path + " cannot be read: " + why};
}

class File
{
public:
    // Without blocking: a pipe at the path must not hold up the daemon.
    explicit File(const std::string& path) : descriptor_(open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC)) {}
    ~File()
    {
        if (descriptor_ >= 0)
            close(descriptor_);
    }
    File(const File&) = delete;
    File& operator=(const File&) = delete;
    int descriptor() const { return descriptor_; }

private:
    int descriptor_;
};

std::string readFile(const std::string& path)
{
    if (path.find('\0') != std::string::npos)
        unreadable(path.c_str(), "a zero byte in its name");
    const File file(path);
    struct stat info = {};
    if (file.descriptor() < 0 || fstat(file.descriptor(), &info) != 0)
        unreadable(path, std::strerror(errno));
    if (!S_ISREG(info.st_mode))
        unreadable(path, "it is not a regular file");
    std::string content;
    std::array<char, 65536> block;
    ssize_t count = 0;
    while ((count = read(file.descriptor(), block.data(), block.size())) > 0) {
        content.append(block.data(), static_cast<std::size_t>(count));
        if (content.size() > maxFileSize)
            unreadable(path, "it is larger than " + std::to_string(maxFileSize) + " bytes");
    }
    if (count < 0)
        unreadable(path, std::strerror(errno));
    return content;
}

bool isPort(std::string_view text)
{
    int port = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), port);
    return error == std::errc() && end == text.data() + text.size() && port >= 1 && port <= 65535;
}

bool isUrl(std::string_view text)
{
    for (const std::string_view scheme : {"http://", "https://"})
        if (text.starts_with(scheme) && text.size() > scheme.size() && text[scheme.size()] != '/')
            return text.find_first_of(" \t\"<>") == std::string_view::npos;
    return false;
}

// Empty when the value is right for its key.
std::string problemOf(std::string_view key, std::string_view value)
{
    const bool known = std::ranges::find(knownKeys, key) != knownKeys.end();
    if (!known && !(key.starts_with(algorithmFamily) && key.size() > algorithmFamily.size()))
        return "is no known key";
    if (value.empty())
        return "has no value";
    if (key.ends_with("port") && !isPort(value))
        return "is not a port number from 1 to 65535";
    if ((key.ends_with("url") || key == "messagebar.logohref") && !isUrl(value))
        return "is not an http or https address";
    if ((key.ends_with("host") || key == "hostname") && value.find_first_of(" \t/") != std::string_view::npos)
        return "is not a host name";
    if ((key == "inlinehtml" || key == "gpt.enable") && value != "true" && value != "false")
        return "is neither true nor false";
    return {};
}

} // namespace

Configuration readConfiguration(const std::string& path)
{
    const auto content = readFile(path);
    std::string_view rest = content;
    if (rest.starts_with("\xEF\xBB\xBF"))
        rest.remove_prefix(3);
    Configuration configuration;
    for (int number = 1; !rest.empty(); ++number) {
        const auto end = std::min(rest.find('\n'), rest.size());
        const auto line = trimmed(rest.substr(0, end));
        rest.remove_prefix(std::min(end + 1, rest.size()));
        if (line.empty() || line.front() == '#')
            continue;
        const auto name = "line " + std::to_string(number);
        const auto equals = line.find('=');
        const auto key = trimmed(line.substr(0, equals));
        if (equals == std::string_view::npos || key.empty())
            configuration.lineProblems[name] = "is not a key=value line";
        else if (!configuration.values.emplace(key, trimmed(line.substr(equals + 1))).second)
            configuration.lineProblems[name] = "gives " + std::string(key) + " again";
    }
    return configuration;
}

StringMap namedConfiguration(const std::string& path)
{
    return path.empty() ? StringMap{} : readConfiguration(path).values;
}

StringMap configurationProblems(const Configuration& configuration)
{
    StringMap problems = configuration.lineProblems;
    for (const auto& [key, value] : configuration.values)
        if (auto problem = problemOf(key, value); !problem.empty())
            problems[key] = std::move(problem);
    if (!configuration.values.contains("hostname"))
        problems["hostname"] = "is missing";
    if (!configuration.values.contains("keyserver.host") && !configuration.values.contains("keyserver.externalurl"))
        problems["keyserver.host"] = "is missing, and so is keyserver.externalurl";
    return problems;
}

} // namespace standin
