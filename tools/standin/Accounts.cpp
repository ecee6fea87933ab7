#include "Accounts.h"

#include "Password.h"
#include "Texts.h"

namespace standin {

std::optional<Account> Accounts::find(std::string_view address) const
{
    auto row =
        database_.query("SELECT address, name, locale, state, blockedUntil FROM accounts WHERE address = ?", address);
    if (!row.step())
        return std::nullopt;
    return Account{row.text(0), row.text(1), row.text(2), static_cast<AccountState>(row.number(3)), row.number(4)};
}

Verdict Accounts::standing(std::string_view address) const
{
    const auto account = find(address);
    if (!account)
        return {Status::NotEnrolled, "there is no account of this address: it can be enrolled"};
    if (account->state == AccountState::Unconfirmed)
        return {Status::EnrollmentUnfinished, "the enrollment of this address is not confirmed yet"};
    if (account->state == AccountState::Disabled)
        return {Status::AccountDisabled, "the account is disabled"};
    const auto wait = account->blockedUntil - nowMillis();
    if (wait > 0) {
        const auto seconds = (wait + 999) / 1000;
        return {Status::TooManyTries, "too many wrong passwords: try again in " + std::to_string(seconds) + " seconds",
                seconds};
    }
    return {};
}

Verdict Accounts::authenticate(std::string_view address, std::string_view password)
{
    auto verdict = standing(address);
    if (verdict.status != Status::Ok)
        return verdict;
    auto row = database_.query("SELECT password FROM accounts WHERE address = ?", address);
    if (!row.step() || !verifyPassword(password, row.text(0))) {
        countFailure(address);
        return {Status::WrongPassword, "wrong password"};
    }
    database_.execute("UPDATE accounts SET failures = 0, blockedUntil = 0 WHERE address = ?", address);
    return {};
}

void Accounts::countFailure(std::string_view address)
{
    database_.execute("UPDATE accounts SET failures = failures + 1 WHERE address = ?", address);
    database_.execute("UPDATE accounts SET failures = 0, blockedUntil = ? WHERE address = ? AND failures >= ?",
                      nowMillis() + blockMillis, address, std::int64_t{maxFailures});
}

std::vector<std::string> Accounts::owners(const std::vector<std::string>& addresses, std::string_view password)
{
    std::vector<std::string> matching;
    std::vector<std::string> failing;
    for (const auto& address : addresses) {
        if (standing(address).status != Status::Ok)
            continue;
        auto row = database_.query("SELECT password FROM accounts WHERE address = ?", address);
        if (row.step() && verifyPassword(password, row.text(0)))
            matching.push_back(address);
        else
            failing.push_back(address);
    }
    if (matching.empty())
        for (const auto& address : failing)
            countFailure(address);
    return matching;
}

StringMap Accounts::openSession(const std::string& address)
{
    const auto now = nowMillis();
    const auto token = randomId();
    database_.execute("DELETE FROM sessions WHERE expires <= ?", now);
    database_.execute("INSERT INTO sessions (token, address, expires) VALUES (?, ?, ?)", token, address,
                      now + sessionMillis);
    return {{"token", token},
            {"user", address},
            {"created", std::to_string(now)},
            {"expires", std::to_string(now + sessionMillis)}};
}

std::optional<std::string> Accounts::sessionUser(std::string_view token) const
{
    auto row = database_.query("SELECT address FROM sessions WHERE token = ? AND expires > ?", token, nowMillis());
    if (!row.step())
        return std::nullopt;
    return row.text(0);
}

std::string Accounts::enrollmentId(const std::string& address)
{
    database_.execute("INSERT OR IGNORE INTO enrollments (id, address) VALUES (?, ?)", randomId(), address);
    auto row = database_.query("SELECT id FROM enrollments WHERE address = ?", address);
    row.step();
    return row.text(0);
}

bool Accounts::isEnrollmentId(std::string_view id, std::string_view address) const
{
    return database_.query("SELECT 1 FROM enrollments WHERE id = ? AND address = ?", id, address).step();
}

std::string Accounts::enrollmentLink(const std::string& id)
{
    return "http://127.0.0.1/enroll?id=" + id;
}

} // namespace standin
