#include "Command.h"
#include "Failure.h"
#include "Files.h"
#include "Secrets.h"
#include "Text.h"
#include <list>
#include <vector>

namespace tarn {

namespace {

struct EncryptOptions
{
    std::string message;
    std::string from;
    std::vector<std::string> to, cc, bcc;
    std::string out, textOut, htmlOut;
    bool overwrite = false;
    std::string config;
    std::string envelopeConfig;
    std::string passwordFile;
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
    const std::string text = readLines(option).front();
    if (!isEncodedConfig(text)) {
        throw Failure(Exit::usage,
                      option + " holds no envelope configuration as \"tarn decrypt --save-config\" saves it");
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
    for (const auto* file : {&options.out, &options.textOut, &options.htmlOut}) {
        refuseExisting(toPath(*file), options.overwrite);
    }
    EncryptRequest request{options.from,           addresses(options.to),         addresses(options.cc),
                           addresses(options.bcc), readTextFile(options.message), encodedConfig(options.envelopeConfig),
                           !options.noLogin};
    const bool logsIn = request.login && request.encodedConfig.empty();
    const Access access{logsIn ? password(options.passwordFile, options.from) : "", absolutePath(options.config)};
    const Envelope envelope = encryptOrExplain(context.client, request, access);

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
    give(options.out, envelope.envelope, "envelope", "Envelope");
    for (auto& file : files) {
        file.commit();
    }
    if (options.out.empty()) {
        context.output.document(envelope.envelope, object);
    } else {
        context.output.result(text, object);
    }
}

} // namespace

void addEncryptCommand(CLI::App& app, Context& context)
{
    const auto options = std::make_shared<EncryptOptions>();
    auto* command = app.add_subcommand("encrypt", "Turn a mail message into an encrypted envelope");
    command->add_option("MESSAGE", options->message, "File with the whole MIME message; - is standard input")
        ->required();
    command->add_option("--from", options->from, "The sender's address")->required();
    // One address an option, so that MESSAGE may follow it.
    command->add_option("--to", options->to, "A recipient; may be repeated")->allow_extra_args(false);
    command->add_option("--cc", options->cc, "A recipient of a copy; may be repeated")->allow_extra_args(false);
    command->add_option("--bcc", options->bcc, "A hidden recipient; may be repeated")->allow_extra_args(false);
    command->add_option("--out", options->out, "File for the envelope (default, and -: standard output)");
    command->add_option("--text", options->textOut, "File for the text body that goes with the envelope");
    command->add_option("--html", options->htmlOut, "File for the HTML body that goes with the envelope");
    command->add_flag("--force", options->overwrite, "Overwrite existing files");
    addConfigOption(command, options->config);
    command->add_option("--envelope-config", options->envelopeConfig,
                        "Envelope configuration, or a file with it, as decrypt --save-config saves it; no login then");
    command->add_flag("--no-login", options->noLogin, "Do not log the sender in first");
    addPasswordOption(command, options->passwordFile);
    command->callback([&context, options] {
        if (options->out == "-") {
            options->out.clear();
        }
        context.action = [&context, options] { encrypt(context, *options); };
    });
}

} // namespace tarn
