#pragma once

#include "ProcessEnd.h"
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <tarn/Secret.h>

namespace tarn {

std::filesystem::path toPath(const std::string& utf8);
std::string toText(const std::filesystem::path& path);

// The daemon has a current folder of its own: paths go to it whole. An empty text stays empty.
std::string absolutePath(const std::string& utf8);

// Lets nobody but the owner into a folder, or at a file.
void makePrivate(const std::filesystem::path& path);

// A whole file, or standard input for "-". It is meant for the library, which takes it as a zero-terminated text.
std::string readTextFile(const std::string& name);

// The same, leaving no copy of it in other memory. What it holds is not looked at.
ClearedVector<char> readConfidentialFile(const std::string& name);

// Refuses an empty text and one that the library would cut at a zero byte. The name is that of the text's file.
void refuseUnfitText(const std::string& name, std::string_view content);

// Fails when the target exists and may not be overwritten, so that a command can tell before it calls the daemon.
void refuseExisting(const std::filesystem::path& target, bool overwrite);

// What OutputFile is told of a file besides its name.
struct FileTraits
{
    bool overwrite = false;
    bool confidential = false;    // nobody but its owner may read it
    bool nameFromOutside = false; // the user did not choose the name: it must not lead to a device or a pipe
};

// A file that appears under its name whole or not at all: it is written in a folder of its own beside the target and
// moved there by commit(). A target that is not a regular file, such as a device, is written to directly.
class OutputFile
{
public:
    OutputFile(std::filesystem::path target, FileTraits traits);
    ~OutputFile();
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    void write(std::string_view data);
    void commit();

private:
    std::filesystem::path target_;
    std::filesystem::path staging_; // empty when the target is written to directly
    FileTraits traits_;
    std::optional<InterruptDelay> delay_;
};

} // namespace tarn
