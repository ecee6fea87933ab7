#pragma once

#include "Wire.h"

#include <cstdint>
#include <ostream>
#include <string>
#include <vector>

// A kind of reply with every sort of field in it, and a call that reads it.
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

const std::vector<ReplyCase>& replyCases();
const ReplyCase& replyCaseOf(const std::string& name);
