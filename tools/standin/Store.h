#pragma once

#include "Database.h"

#include <string>

namespace standin {

// Opens a store, in memory when the path is empty. A new one is made, for its owner's eyes only, with its tables and
// the ready-made accounts; an existing one must be sound and of this version.
Database openStore(const std::string& path);

} // namespace standin
