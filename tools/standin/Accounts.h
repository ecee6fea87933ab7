#pragma once

#include "Database.h"
#include "Status.h"
#include "Wire.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace standin {

enum class AccountState { Active = 0, Unconfirmed = 1, Disabled = 2 };

struct Account
{
    std::string address;
    std::string name;
    std::string locale;
    AccountState state;
    std::int64_t blockedUntil;
};

// What a check of an account or its password came to.
struct Verdict
{
    Status status = Status::Ok;
    std::string message;
    std::int64_t secondsToWait = 0;
};

// Accounts, their sessions and the enrollment ids handed out. Addresses are normal ones.
class Accounts
{
public:
    static constexpr int maxFailures = 5;
    static constexpr std::int64_t blockMillis = 30'000;
    static constexpr std::int64_t sessionMillis = 30 * 60'000;

    explicit Accounts(Database& database) : database_(database) {}

    std::optional<Account> find(std::string_view address) const;

    // Whether the account could log in, its password aside.
    Verdict standing(std::string_view address) const;
    // Counts a wrong password; five of them block the account for a while.
    Verdict authenticate(std::string_view address, std::string_view password);
    // Those of the addresses whose password it is; a password that fits none counts as wrong for all of them.
    std::vector<std::string> owners(const std::vector<std::string>& addresses, std::string_view password);

    // The session as its user carries it: token, user and dates.
    StringMap openSession(const std::string& address);
    // The user of a session that has not expired.
    std::optional<std::string> sessionUser(std::string_view token) const;

    // The enrollment id of an address, made when it has none.
    std::string enrollmentId(const std::string& address);
    bool isEnrollmentId(std::string_view id, std::string_view address) const;
    static std::string enrollmentLink(const std::string& id);

private:
    void countFailure(std::string_view address);

    Database& database_;
};

} // namespace standin
