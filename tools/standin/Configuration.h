#pragma once

#include "Handlers.h"
#include "Wire.h"

#include <string>

namespace standin {

// An envelope configuration file: "key=value" lines, blank lines, and comments that begin with "#".
struct Configuration
{
    StringMap values;
    StringMap lineProblems; // "line N" to what is wrong with it
};

// The configuration file that a request names in 'ep'; empty when it names none. Throws a Refusal when the file cannot
// be read, or may not be: anybody can ask for it, so it has to be in the folder for such files.
Configuration namedConfiguration(const Request& request, const Context& context);

// What is wrong with the lines, the keys and their values: each problem under its line or key.
StringMap configurationProblems(const Configuration& configuration);

} // namespace standin
