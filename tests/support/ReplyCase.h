#pragma once

#include "Wire.h"

#include <algorithm>
#include <cstdint>
#include <initializer_list>
#include <ostream>
#include <string>
#include <vector>

// A kind of reply with every sort of field in it, and a call that reads it: what the hostile and the endless daemon
// play with.
struct ReplyCase
{
    std::string name; // the export's
    std::string code;
    wire::Params fields;
    std::int32_t (*call)(char* log);
    std::int32_t success = 0;
    std::int32_t failure = -1;
    std::string failureLine = "Unexpected exception occured. GetLastError() : ";

    std::string goodReply() const { return wire::message(code, fields); }
};

// What a test's parameter is printed as.
inline void PrintTo(const ReplyCase& one, std::ostream* out)
{
    *out << one.name;
}

// The cases of all files.
inline std::vector<ReplyCase>& replyCases()
{
    static std::vector<ReplyCase> all;
    return all;
}

inline const ReplyCase& replyCaseOf(const std::string& name)
{
    return *std::ranges::find(replyCases(), name, &ReplyCase::name);
}

// Adds those of one file, as a variable there.
struct ReplyCases
{
    ReplyCases(std::initializer_list<ReplyCase> own) { replyCases().insert(replyCases().end(), own); }
};

inline wire::Params statusReply(wire::Params own = {})
{
    own.insert(own.begin(), {{"cd", "ok"}, {"st", wire::shortInt(0)}, {"em", "fine"}});
    return own;
}

inline wire::Params loginReply(wire::Params own = {})
{
    own.insert(own.begin(), {{"lk", "link"}, {"se", wire::int64(7)}, {"we", wire::int32(1)}});
    return statusReply(own);
}

inline std::string twoEntries()
{
    return wire::sequence({"key", "one", "next", "two"});
}

inline std::string twoTexts()
{
    return wire::sequence({"a@x", "b@x"});
}

// Room for whatever a reply here may hold.
template <class Char, int number = 0>
Char* room()
{
    static std::vector<Char> buffer(1 << 22);
    return buffer.data();
}
