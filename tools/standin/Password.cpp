#include "Password.h"

#include "Limits.h"

#include <array>
#include <cerrno>
#include <crypt.h>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <sys/random.h>
#include <system_error>

namespace standin {

namespace {

static_assert(limit::password < CRYPT_MAX_PASSPHRASE_SIZE);

// Empty when crypt cannot take the password, which it reads up to a zero byte, or does not know the setting.
std::string crypted(const std::string& password, const std::string& setting)
{
    const auto scratch = std::make_unique<crypt_data>();
    if (password.find('\0') != std::string::npos) {
        return {};
    }
    const char* hash = crypt_rn(password.c_str(), setting.c_str(), scratch.get(), sizeof *scratch);
    return hash == nullptr ? "" : hash;
}

} // namespace

std::string hashPassword(const std::string& password)
{
    std::array<char, CRYPT_GENSALT_OUTPUT_SIZE> setting{};
    std::string hash;
    if (crypt_gensalt_rn(nullptr, 0, nullptr, 0, setting.data(), static_cast<int>(setting.size())) != nullptr) {
        hash = crypted(password, setting.data());
    }
    if (hash.empty()) {
        throw std::system_error(errno, std::generic_category(), "the password cannot be hashed");
    }
    return hash;
}

bool verifyPassword(const std::string& password, const std::string& stored)
{
    return !stored.empty() && crypted(password, stored) == stored;
}

std::string randomId()
{
    std::array<std::uint8_t, 16> bytes{};
    if (getrandom(bytes.data(), bytes.size(), 0) != static_cast<ssize_t>(bytes.size())) {
        throw std::system_error(errno, std::generic_category(), "no random numbers");
    }
    std::string id;
    for (const auto byte : bytes) {
        char digits[3];
        std::snprintf(digits, sizeof digits, "%02x", byte);
        id += digits;
    }
    return id;
}

} // namespace standin
