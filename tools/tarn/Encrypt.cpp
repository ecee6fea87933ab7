#include "Command.h"
#include "Failure.h"
#include "Files.h"
#include "Secrets.h"
#include "Text.h"
#include <list>

namespace tarn {

namespace {

struct EncryptOptions : AccessOptions
{
    std::string message;
    std::string from;
    std::vector<std::string> to, cc, bcc;
    std::string out, textOut, htmlOut;
    bool overwrite = false;
    std::string envelopeConfig;
    bool noLogin = false;
};

bool isEncodedConfig(const std::string& text)
{
    return text.find('&') != text.npos && text.find_first_not_of("-0123456789&") == text.npos;
}

// The option is the encoded text itself or a file that holds it.
std::string encodedConfig(const std::string& option)
{
    if (option.empty() || isEncodedConfig(option)) {
        return option;
    }
    std::string text(std::string_view(secretLines(option).front()));
    if (!isEncodedConfig(text)) {
        throw Failure(Exit::usage,
                      option + " holds no envelope configuration such as \"tarn decrypt --save-config\" saves");
    }
    return text;
}

Envelope encryptOrExplain(Client& client, const EncryptRequest& request, const Access& access)
{
    try {
        return client.encrypt(request, access);
    } catch (const StatusError& error) {
        // A refused login leaves no log, and so no message of the daemon's.
        if (!error.log().empty()) {
            throw;
        }
        throw refusal(error, "the login of " + request.from + " was answered with " + statusText(error.status()) +
                                 "; \"tarn login " + request.from + "\" tells why");
    } catch (const LogTooSmall& error) {
        throw Failure(Exit::usage, error.what() + std::string("; send the message to fewer recipients at a time"));
    }
}

void encrypt(Context& context, const EncryptOptions& options)
{
    if (options.to.empty() && options.cc.empty() && options.bcc.empty()) {
        throw Failure(Exit::usage, "a message needs a recipient: --to, --cc or --bcc");
    }
    const std::string out = options.out == "-" ? "" : options.out;
    for (const auto* file : {&out, &options.textOut, &options.htmlOut}) {
        refuseExisting(toPath(*file), options.overwrite);
    }
    const EncryptRequest request{.from = options.from,
                                 .to = options.to,
                                 .cc = options.cc,
                                 .bcc = options.bcc,
                                 .message = readTextFile(options.message),
                                 .encodedConfig = encodedConfig(options.envelopeConfig),
                                 .login = !options.noLogin};
    const bool logsIn = request.login && request.encodedConfig.empty();
    const Envelope envelope = encryptOrExplain(
        context.client, request, logsIn ? options.access(options.from) : Access{.configFile = options.configFile()});

    nlohmann::json object{{"attachmentName", envelope.attachmentName}};
    std::string text;
    std::list<OutputFile> files;
    const auto give = [&](const std::string& file, const std::string& content, const char* name, const char* title) {
        if (!file.empty()) {
            files.emplace_back(toPath(file), FileTraits{options.overwrite}).write(content);
            text += std::string(title) + " written to " + printable(file) + "\n";
            object[std::string(name) + "File"] = file;
        } else {
            object[name] = content;
        }
    };
    give(options.textOut, envelope.textBody, "textBody", "Text body");
    give(options.htmlOut, envelope.htmlBody, "htmlBody", "HTML body");
    give(out, envelope.envelope, "envelope", "Envelope");
    for (auto& file : files) {
        file.commit();
    }
    if (out.empty()) {
        context.output.document(envelope.envelope, object);
    } else {
        context.output.result(text, object);
    }
}

} // namespace

void addEncryptCommand(Parser& program, Context& context)
{
    auto [parser, options] =
        addCommand(program, context, "encrypt", "Turn a mail message into an encrypted envelope", encrypt);
    parser.argument("MESSAGE", options.message, "File with the whole MIME message; - is standard input");
    parser.text("--from", "ADDRESS", options.from, "The sender", Needed::yes);
    parser.addresses("--to", options.to, "A recipient");
    parser.addresses("--cc", options.cc, "A recipient of a copy");
    parser.addresses("--bcc", options.bcc, "A hidden recipient");
    parser.text("--out", "FILE", options.out, "File for the envelope (default, and -: standard output)");
    parser.text("--text", "FILE", options.textOut, "File for the text body that goes with the envelope");
    parser.text("--html", "FILE", options.htmlOut, "File for the HTML body that goes with the envelope");
    parser.flag("--force", options.overwrite, "Overwrite existing files");
    parser.text("--envelope-config", "FILE", options.envelopeConfig,
                "Envelope configuration that decrypt --save-config saved, or a file with it; no login then");
    parser.flag("--no-login", options.noLogin, "Do not log the sender in first");
    parser.access(options);
}

} // namespace tarn
