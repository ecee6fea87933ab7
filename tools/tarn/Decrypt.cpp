#include "Command.h"
#include "Failure.h"
#include "Files.h"
#include "Host.h"
#include "SafeFileName.h"
#include "Secrets.h"
#include "Text.h"
#include <filesystem>
#include <list>

namespace tarn {

namespace fs = std::filesystem;

namespace {

struct DecryptOptions
{
    std::string envelope;
    std::string out;
    bool overwrite = false;
    std::string recipient;
    std::string sessionKeyFile;
    bool keepOpen = false;
    std::string saveConfig;
    std::string config;
    std::string passwordFile;
};

// A folder that is made when it is missing, and removed again when nothing came to be in it.
class OutputFolder
{
public:
    explicit OutputFolder(fs::path folder) : path(std::move(folder))
    {
        std::error_code error;
        made_ = fs::create_directories(path, error);
        if (error || !fs::is_directory(path)) {
            throw Failure(Exit::file, toText(path) + " cannot be made: " +
                                          (error ? error.message() : std::string("a file of this name exists")));
        }
        if (made_) {
            makePrivate(path);
        }
    }
    ~OutputFolder()
    {
        std::error_code ignored;
        if (made_) {
            fs::remove(path, ignored); // of empty folders only
        }
    }
    OutputFolder(const OutputFolder&) = delete;
    OutputFolder& operator=(const OutputFolder&) = delete;

    const fs::path path;

private:
    const InterruptDelay delay_;
    bool made_ = false;
};

std::string sessionKey(const DecryptOptions& options)
{
    if (!options.sessionKeyFile.empty()) {
        return readLines(options.sessionKeyFile).front();
    }
    return host::environment("TARN_SESSION_KEY").value_or("");
}

std::string passwordFor(const DecryptOptions& options, const std::string& key)
{
    // With a session key a password may be given, but is not asked for.
    if (key.empty() || !options.passwordFile.empty()) {
        return password(options.passwordFile, options.recipient);
    }
    return host::environment("TARN_PASSWORD").value_or("");
}

struct Written
{
    Table table{{"FILE", "BYTES", "CONTENT TYPE"}};
    nlohmann::json items = nlohmann::json::array();
};

// All files are written before the first one gets its name.
Written writeItems(Client& client, const DecryptOptions& options, const std::string& encodedConfig)
{
    const OutputFolder folder(toPath(options.out));
    std::list<OutputFile> files;
    SafeFileNames names;
    Written written;
    while (const auto item = client.nextItem()) {
        const std::string name = names.next(item->name, item->contentType);
        files.emplace_back(folder.path / toPath(name), FileTraits{options.overwrite, true, true}).write(item->data);
        written.table.add({name, std::to_string(item->data.size()), item->contentType});
        written.items.push_back({{"file", name},
                                 {"name", item->name},
                                 {"contentType", item->contentType},
                                 {"size", item->data.size()},
                                 {"flags", item->flags},
                                 {"type", item->type}});
    }
    if (!options.saveConfig.empty()) {
        files.emplace_back(toPath(options.saveConfig), FileTraits{options.overwrite, true}).write(encodedConfig + "\n");
    }
    for (auto& file : files) {
        file.commit();
    }
    return written;
}

void decrypt(Context& context, const DecryptOptions& options)
{
    refuseExisting(toPath(options.saveConfig), options.overwrite);
    if (options.out == "-") {
        throw Failure(Exit::usage, "an envelope can hold several files: --out is a folder");
    }
    const DecryptRequest request{readTextFile(options.envelope), options.recipient, sessionKey(options),
                                 options.keepOpen};
    const Decryption decryption =
        context.client.decrypt(request, {passwordFor(options, request.sessionKey), absolutePath(options.config)});
    const Written written = writeItems(context.client, options, decryption.encodedConfig);
    std::string text = "From " + printable(decryption.from) + "\n" + written.table.text();
    if (!decryption.key.empty()) {
        text += "Session key " + printable(decryption.key) + "\n";
    }
    context.output.result(text, {{"from", decryption.from}, {"key", decryption.key}, {"items", written.items}});
}

} // namespace

void addDecryptCommand(CLI::App& app, Context& context)
{
    const auto options = std::make_shared<DecryptOptions>();
    auto* command = app.add_subcommand("decrypt", "Open an envelope and write what it holds into a folder");
    command->add_option("ENVELOPE", options->envelope, "File with the envelope; - is standard input")->required();
    command->add_option("--out", options->out, "The folder, made when missing")->required();
    command->add_flag("--force", options->overwrite, "Overwrite existing files");
    command->add_option("--recipient", options->recipient, "The address that the envelope is opened for");
    command->add_option("--session-key-file", options->sessionKeyFile,
                        "File whose first line is a session key; without it TARN_SESSION_KEY");
    command->add_flag("--keep-open", options->keepOpen, "Ask the daemon to keep the envelope open");
    command->add_option("--save-config", options->saveConfig,
                        "File for the envelope's configuration, for encrypt --envelope-config");
    addConfigOption(command, options->config);
    addPasswordOption(command, options->passwordFile);
    onRun(command, context, options, decrypt);
}

} // namespace tarn
