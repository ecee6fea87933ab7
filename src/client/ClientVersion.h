#pragma once

#include <string>

namespace Client {

// What most requests name as the client: empty until GetTarnVersion was called.
std::string& clientVersion();

// The label of the built-in client version.
std::string buildClientVersion();

} // namespace Client
