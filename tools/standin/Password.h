#pragma once

#include <string>

namespace standin {

// A salted hash of the system's preferred method, at its usual cost. The password has at most limit::password bytes,
// none of them zero.
std::string hashPassword(const std::string& password);
bool verifyPassword(const std::string& password, const std::string& stored);

// 128 random bits as 32 hexadecimal digits: nobody guesses it.
std::string randomId();

} // namespace standin
