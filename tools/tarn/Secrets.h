#pragma once

#include <optional>
#include <string>
#include <vector>

namespace tarn {

// Secrets come from a file, an environment variable or a hidden question at the terminal, in this order, and never
// from the command line, which others can see.
struct SecretSource
{
    std::string file;       // given by an option, may be empty
    std::string fileOption; // that option's name
    std::string variable;   // the environment variable
    std::string question;   // asked at the terminal
    bool confirm = false;   // asked twice
    bool optional = false;  // an empty text where there is nobody to ask
};

std::string secret(const SecretSource& source);

// The password of an existing account.
std::string password(const std::string& file, const std::string& user);

// The lines of a file, without their line ends.
std::vector<std::string> readLines(const std::string& file);

// What is not secret: the given text or, when it is empty, the answer at the terminal.
std::string askUnlessGiven(const std::string& given, const std::string& option, const std::string& question);

} // namespace tarn
