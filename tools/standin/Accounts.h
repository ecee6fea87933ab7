#pragma once

#include "Database.h"
#include "Status.h"
#include "Wire.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace standin {

enum class AccountState { Active = 0, Unconfirmed = 1, Disabled = 2 };

struct Account
{
    AccountState state;
    std::string password; // hashed
    std::int64_t blockedUntil;
};

// Accounts, their sessions and the enrollment ids handed out. Addresses are normal ones.
class Accounts
{
public:
    static constexpr int maxFailures = 5;
    static constexpr std::int64_t blockMillis = 30'000;
    static constexpr std::int64_t sessionMillis = 30 * 60'000;

    explicit Accounts(Database& database) : database_(database) {}

    void addReadyMade();
    std::optional<Account> find(const std::string& address) const;

    // Whether the account could log in, its password aside.
    Verdict standing(const std::string& address) const;
    // Counts a wrong password; five of them block the account for a while.
    Verdict authenticate(const std::string& address, const std::string& password);
    // Those of the addresses whose password it is; a password that fits none counts as wrong for all of them.
    std::vector<std::string> owners(const std::vector<std::string>& addresses, const std::string& password);

    // The session as its user carries it: token, user and dates.
    StringMap openSession(const std::string& address);
    // The user of a session that has not expired.
    std::optional<std::string> sessionUser(const std::string& token) const;

    // The enrollment id of an address, made when it has none.
    std::string enrollmentId(const std::string& address);
    bool isEnrollmentId(const std::string& id, const std::string& address) const;
    static std::string enrollmentLink(const std::string& id);

private:
    void countFailure(const std::string& address);

    Database& database_;
};

} // namespace standin
