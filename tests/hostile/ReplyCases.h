#pragma once

#include <cstdint>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

// A value on the wire that knows where the length fields in it are.
struct Value
{
    struct Length
    {
        std::size_t at;
        bool ignored; // the library reads as many bytes as the number has, whatever its length says
    };

    std::string bytes;
    std::vector<Length> lengths;
    bool isNumber = false;
};

Value text(std::string bytes);
Value number(std::string bytes);
// Texts or items, each behind its length.
Value sequence(const std::vector<Value>& items);
Value parameters(const std::vector<std::pair<std::string, Value>>& all);

// A kind of reply with every field there is, and a call that reads it.
struct ReplyCase
{
    std::string name; // the export's
    std::string code;
    Value fields;
    std::int32_t (*call)(char* log);
    std::int32_t success = 0;
    std::int32_t failure = -1;
    std::string failureLine = "Unexpected exception occured. GetLastError() : ";

    std::string goodReply() const;
};

// What a test's parameter is printed as.
inline void PrintTo(const ReplyCase& one, std::ostream* out)
{
    *out << one.name;
}

const std::vector<ReplyCase>& replyCases();
const ReplyCase& replyCaseOf(const std::string& name);
