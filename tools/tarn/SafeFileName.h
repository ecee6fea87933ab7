#pragma once

#include <set>
#include <string>
#include <string_view>

namespace tarn {

// Turns the names of a message's items, which its sender chose, into file names that stay in the folder they are
// written to, on every system: no folders, no drive letters, no hidden files, no names that Windows keeps to itself.
// Names of one message that would fall together get a number.
class SafeFileNames
{
public:
    // contentType serves an item without a usable name.
    std::string next(std::string_view itemName, std::string_view contentType);

private:
    std::set<std::string> taken_; // without regard to case, as on some file systems
    int itemNumber_ = 0;
};

} // namespace tarn
