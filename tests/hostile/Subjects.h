#pragma once

#include "HostileDaemon.h"

#include <string>
#include <utility>
#include <vector>

// A piece of a reply that knows where its length fields are.
struct Piece
{
    struct Length
    {
        std::size_t at;
        bool ignored; // the library takes the value's own size instead
    };

    std::string bytes;
    std::vector<Length> lengths;
    bool fixedSize = false;
};

Piece text(std::string bytes);
Piece number(std::string bytes);
// Texts or items, each behind its length.
Piece sequence(const std::vector<Piece>& items);
Piece parameters(const std::vector<std::pair<std::string, Piece>>& all);

// A kind of reply with every field there is, and a call that reads it.
struct Subject
{
    std::string code;
    Piece fields;
    HostileDaemon::Call call;
    std::int32_t success = 0;
    std::int32_t failure = -1;
    std::string failureLine = "Unexpected exception occured. GetLastError() : ";
};

const std::vector<Subject>& subjects();
const Subject& subjectOf(const std::string& code);

// A frame with a right CRC around parameters.
std::string framed(const std::string& code, const std::string& parameters);
