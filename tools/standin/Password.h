#pragma once

#include <string>
#include <string_view>

namespace standin {

// A salted, slowed-down hash (PBKDF2 with HMAC-SHA256) as text, salt and rounds included.
std::string hashPassword(std::string_view password);
bool verifyPassword(std::string_view password, const std::string& stored);

// 128 random bits as 32 hexadecimal digits: nobody guesses it.
std::string randomId();

} // namespace standin
