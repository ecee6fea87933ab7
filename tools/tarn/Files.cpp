#include "Files.h"

#include "Failure.h"
#include "Host.h"
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <iostream>
#include <random>

namespace tarn {

namespace fs = std::filesystem;

namespace {

constexpr std::size_t chunkSize = 1 << 16;
const char* const stagedName = "data";

Failure fileFailure(const std::string& name, const std::string& what, int error)
{
    return {Exit::file, name + " " + what + ": " + (error ? std::strerror(error) : "unknown reason")};
}

ClearedVector<char> readAll(std::istream& input, const std::string& name)
{
    ClearedVector<char> content;
    while (input) {
        const std::size_t size = content.size();
        content.resize(size + chunkSize);
        input.read(content.data() + size, chunkSize);
        content.resize(size + static_cast<std::size_t>(input.gcount()));
    }
    if (input.bad()) {
        throw fileFailure(name, "cannot be read", errno);
    }
    return content;
}

fs::path makeStagingFolder(const fs::path& target)
{
    const fs::path folder = target.has_parent_path() ? target.parent_path() : fs::path(".");
    std::random_device random;
    for (int attempt = 0; attempt < 100; ++attempt) {
        fs::path staging = folder / (".tarn-" + std::to_string(random()));
        std::error_code error;
        if (fs::create_directory(staging, error)) {
            makePrivate(staging);
            return staging;
        }
        if (error) {
            throw Failure(Exit::file, toText(target) + " cannot be created: " + error.message());
        }
    }
    throw Failure(Exit::file, toText(folder) + " is full of unfinished files of this program");
}

} // namespace

fs::path toPath(const std::string& utf8)
{
    return {std::u8string(utf8.begin(), utf8.end())};
}

std::string toText(const fs::path& path)
{
    const auto text = path.u8string();
    return {text.begin(), text.end()};
}

std::string absolutePath(const std::string& utf8)
{
    return utf8.empty() ? utf8 : toText(fs::absolute(toPath(utf8)));
}

std::string readTextFile(const std::string& name)
{
    const auto content = readConfidentialFile(name);
    std::string text(content.begin(), content.end());
    refuseUnfitText(name, text);
    return text;
}

// The streams have no buffers of their own, in which a secret would stay.
ClearedVector<char> readConfidentialFile(const std::string& name)
{
    errno = 0;
    if (name == "-") {
        std::setvbuf(stdin, nullptr, _IONBF, 0);
        return readAll(std::cin, "standard input");
    }
    std::error_code error;
    if (fs::is_directory(toPath(name), error)) {
        throw Failure(Exit::file, name + " cannot be read: it is a folder");
    }
    std::ifstream file;
    file.rdbuf()->pubsetbuf(nullptr, 0);
    file.open(toPath(name), std::ios::binary);
    if (!file) {
        throw fileFailure(name, "cannot be read", errno);
    }
    return readAll(file, name);
}

void refuseUnfitText(const std::string& name, std::string_view content)
{
    const std::string source = name == "-" ? "standard input" : name;
    if (content.empty()) {
        throw Failure(Exit::usage, source + " is empty");
    }
    if (const auto zero = content.find('\0'); zero != content.npos) {
        throw Failure(Exit::usage, source + " holds a zero byte (at offset " + std::to_string(zero) +
                                       "), which no mail message has. Is it in UTF-16, or an attachment by itself?");
    }
}

void makePrivate(const fs::path& path)
{
    const auto owner = fs::is_directory(path) ? fs::perms::owner_all : fs::perms::owner_read | fs::perms::owner_write;
    fs::permissions(path, owner);
}

void refuseExisting(const fs::path& target, bool overwrite)
{
    std::error_code error;
    if (fs::is_directory(target, error)) {
        throw Failure(Exit::file, toText(target) + " is a folder");
    }
    const bool special = fs::exists(target, error) && !fs::is_regular_file(target, error);
    if (!overwrite && !special && fs::exists(fs::symlink_status(target, error))) {
        throw Failure(Exit::file, toText(target) + " exists already; --force overwrites it");
    }
}

OutputFile::OutputFile(fs::path target, FileTraits traits) : target_(std::move(target)), traits_(traits)
{
    refuseExisting(target_, traits_.overwrite);
    std::error_code error;
    const bool exists = fs::exists(target_, error);
    if (exists && !fs::is_regular_file(target_, error)) {
        if (traits_.nameFromOutside) {
            throw Failure(Exit::file, toText(target_) + " exists already and is not a regular file");
        }
        return;
    }
    if (exists) {
        target_ = fs::canonical(target_); // a link keeps pointing to the file
    }
    delay_.emplace();
    staging_ = makeStagingFolder(target_);
}

OutputFile::~OutputFile()
{
    std::error_code ignored;
    if (!staging_.empty()) {
        fs::remove_all(staging_, ignored);
    }
}

void OutputFile::write(std::string_view data)
{
    errno = 0;
    const fs::path path = staging_.empty() ? target_ : staging_ / stagedName;
    std::ofstream file(path, std::ios::binary);
    if (file && traits_.confidential && !staging_.empty()) {
        makePrivate(path);
    }
    for (std::size_t start = 0; start < data.size() && file; start += chunkSize) {
        const auto chunk = data.substr(start, chunkSize);
        file.write(chunk.data(), static_cast<std::streamsize>(chunk.size()));
        if (delay_) {
            InterruptDelay::check();
        }
    }
    file.close();
    if (!file) {
        throw fileFailure(toText(target_), "cannot be written", errno);
    }
}

void OutputFile::commit()
{
    if (staging_.empty()) {
        return;
    }
    std::error_code error;
    if (traits_.overwrite) {
        fs::rename(staging_ / stagedName, target_, error);
    } else {
        error = host::renameUnlessTaken(staging_ / stagedName, target_);
    }
    if (error) {
        throw Failure(Exit::file, toText(target_) + " cannot be written: " + error.message());
    }
}

} // namespace tarn
