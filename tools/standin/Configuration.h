#pragma once

#include "Wire.h"

#include <string>
#include <string_view>

namespace standin {

// An envelope configuration file: "key=value" lines, blank lines, and comments that begin with "#".
struct Configuration
{
    StringMap values;
    StringMap lineProblems; // "line N" to what is wrong with it
};

// Throws a Refusal when the file cannot be read.
Configuration readConfiguration(const std::string& path);

// The configuration that a request names in 'ep'; empty when it names none.
StringMap namedConfiguration(const std::string& path);

// What is wrong with the lines, the keys and their values: each problem under its line or key.
StringMap configurationProblems(const Configuration& configuration);

} // namespace standin
