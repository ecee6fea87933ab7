#pragma once

#include <map>
#include <string>

// Named texts in ascending order of their names, which are compared as unsigned bytes.
using StringMap = std::map<std::string, std::string>;
