#pragma once

#include "Wire.h"

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <string>

namespace standin {

// Faults on purpose, for a program that is to meet them.
struct Faults
{
    std::map<Tag, std::int16_t> answers;   // commands that are not carried out, and the status that they get
    std::chrono::milliseconds delay{};     // before each reply
    std::optional<int> repliesBeforeReset; // of each connection
};

// What the command line says.
struct Settings
{
    std::string storePath; // empty for a store in memory
    std::uint16_t port = 53007;
    std::optional<std::filesystem::path> configurationFolder; // canonical
    std::chrono::seconds idleLimit{3600};
    bool traced = false;
    Faults faults;
};

} // namespace standin
