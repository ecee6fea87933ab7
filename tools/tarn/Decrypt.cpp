#include "Command.h"
#include "Failure.h"
#include "Files.h"
#include "Host.h"
#include "SafeFileName.h"
#include "Secrets.h"
#include "Text.h"
#include <list>

namespace tarn {

namespace fs = std::filesystem;

namespace {

struct DecryptOptions : AccessOptions
{
    std::string envelope;
    std::string out;
    bool overwrite = false;
    std::string recipient;
    std::string sessionKeyFile;
    bool keepOpen = false;
    std::string saveConfig;
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

Decryption openEnvelope(Client& client, const DecryptOptions& options)
{
    const auto variable = [](const char* name) { return host::environment(name).value_or(Secret()); };
    const DecryptRequest request{.envelope = readTextFile(options.envelope),
                                 .recipient = options.recipient,
                                 .sessionKey = options.sessionKeyFile.empty()
                                                   ? variable("TARN_SESSION_KEY")
                                                   : secretLines(options.sessionKeyFile).front(),
                                 .keepOpen = options.keepOpen};
    // With a session key a password may be given, but is not asked for.
    const bool asks = request.sessionKey.empty() || !options.passwordFile.empty();
    return client.decrypt(request, asks ? options.access(options.recipient)
                                        : Access{variable("TARN_PASSWORD"), options.configFile()});
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
    const Decryption decryption = openEnvelope(context.client, options);
    const Written written = writeItems(context.client, options, decryption.encodedConfig);
    std::string text = "From " + printable(decryption.from) + "\n" + written.table.text();
    if (!decryption.key.empty()) {
        text += "Session key " + printable(decryption.key) + "\n";
    }
    context.output.result(text, {{"from", decryption.from}, {"key", decryption.key}, {"items", written.items}});
}

} // namespace

void addDecryptCommand(Parser& program, Context& context)
{
    auto [parser, options] =
        addCommand(program, context, "decrypt", "Open an envelope and write what it holds into a folder", decrypt);
    parser.envelope(options.envelope);
    parser.text("--out", "FOLDER", options.out, "The folder, made when missing", Needed::yes);
    parser.flag("--force", options.overwrite, "Overwrite existing files");
    parser.text("--recipient", "ADDRESS", options.recipient, "The address that the envelope is opened for");
    parser.text("--session-key-file", "FILE", options.sessionKeyFile,
                "File whose first line is a session key; without it TARN_SESSION_KEY");
    parser.flag("--keep-open", options.keepOpen, "Ask the daemon to keep the envelope open");
    parser.text("--save-config", "FILE", options.saveConfig,
                "File for the envelope's configuration, for encrypt --envelope-config");
    parser.access(options);
}

} // namespace tarn
