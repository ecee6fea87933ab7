#include "Accounts.h"

#include "Password.h"
#include "Texts.h"

#include <array>

namespace standin {

namespace {

struct ReadyMade
{
    const char* address;
    const char* name;
    const char* locale;
    const char* password;
    AccountState state = AccountState::Active;
};

constexpr std::array readyMade = {
    ReadyMade{"alice@example.com", "Alice", "en", "wonderland"},
    ReadyMade{"bob@example.com", "Bob", "de", "builder"},
    ReadyMade{"carol@example.com", "Carol", "fr", "caravan"},
    ReadyMade{"dave@example.com", "Dave", "en", "doorstop", AccountState::Disabled},
};

} // namespace

void Accounts::addReadyMade()
{
    for (const auto& account : readyMade) {
        execute(database_, "INSERT INTO accounts (address, name, locale, password, state) VALUES (?, ?, ?, ?, ?)",
                account.address, account.name, account.locale, hashPassword(account.password),
                static_cast<int>(account.state));
    }
}

std::optional<Account> Accounts::find(const std::string& address) const
{
    auto row = query(database_, "SELECT state, password, blockedUntil FROM accounts WHERE address = ?", address);
    if (!row.executeStep()) {
        return std::nullopt;
    }
    return Account{static_cast<AccountState>(row.getColumn(0).getInt()), row.getColumn(1), row.getColumn(2)};
}

Verdict Accounts::standing(const std::string& address) const
{
    const auto account = find(address);
    if (!account) {
        return {Status::NotEnrolled, "there is no account of this address: it can be enrolled"};
    }
    if (account->state == AccountState::Unconfirmed) {
        return {Status::EnrollmentUnfinished, "the enrollment of this address is not confirmed yet"};
    }
    if (account->state == AccountState::Disabled) {
        return {Status::AccountDisabled, "the account is disabled"};
    }
    const auto wait = account->blockedUntil - nowMillis();
    if (wait > 0) {
        const auto seconds = (wait + 999) / 1000;
        return {Status::TooManyTries, "too many wrong passwords: try again in " + std::to_string(seconds) + " seconds",
                seconds};
    }
    return {};
}

Verdict Accounts::authenticate(const std::string& address, const std::string& password)
{
    auto verdict = standing(address);
    if (verdict.status != Status::Ok) {
        return verdict;
    }
    if (!verifyPassword(password, find(address)->password)) {
        countFailure(address);
        return {Status::WrongPassword, "wrong password"};
    }
    execute(database_, "UPDATE accounts SET failures = 0, blockedUntil = 0 WHERE address = ?", address);
    return {};
}

void Accounts::countFailure(const std::string& address)
{
    execute(database_, "UPDATE accounts SET failures = failures + 1 WHERE address = ?", address);
    execute(database_, "UPDATE accounts SET failures = 0, blockedUntil = ? WHERE address = ? AND failures >= ?",
            nowMillis() + blockMillis, address, maxFailures);
}

std::vector<std::string> Accounts::owners(const std::vector<std::string>& addresses, const std::string& password)
{
    std::vector<std::string> matching;
    std::vector<std::string> failing;
    for (const auto& address : addresses) {
        if (standing(address).status == Status::Ok) {
            (verifyPassword(password, find(address)->password) ? matching : failing).push_back(address);
        }
    }
    if (matching.empty()) {
        for (const auto& address : failing) {
            countFailure(address);
        }
    }
    return matching;
}

StringMap Accounts::openSession(const std::string& address)
{
    const auto now = nowMillis();
    const auto token = randomId();
    execute(database_, "DELETE FROM sessions WHERE expires <= ?", now);
    execute(database_, "INSERT INTO sessions (token, address, expires) VALUES (?, ?, ?)", token, address,
            now + sessionMillis);
    return {{"token", token},
            {"user", address},
            {"created", std::to_string(now)},
            {"expires", std::to_string(now + sessionMillis)}};
}

std::optional<std::string> Accounts::sessionUser(const std::string& token) const
{
    return findText(database_, "SELECT address FROM sessions WHERE token = ? AND expires > ?", token, nowMillis());
}

std::string Accounts::enrollmentId(const std::string& address)
{
    execute(database_, "INSERT OR IGNORE INTO enrollments (id, address) VALUES (?, ?)", randomId(), address);
    return findText(database_, "SELECT id FROM enrollments WHERE address = ?", address).value();
}

bool Accounts::isEnrollmentId(const std::string& id, const std::string& address) const
{
    return findText(database_, "SELECT id FROM enrollments WHERE id = ? AND address = ?", id, address).has_value();
}

std::string Accounts::enrollmentLink(const std::string& id)
{
    return "http://127.0.0.1/enroll?id=" + id;
}

} // namespace standin
