#pragma once

#include <string>
#include <tarn/Secret.h>
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

Secret readSecret(const SecretSource& source);

// The password of an existing account.
Secret password(const std::string& file, const std::string& user);

// The lines of a file with secrets, without their line ends. A byte order mark may say that it is in UTF-16.
std::vector<Secret> secretLines(const std::string& file);

// What is not secret: the given text or, when it is empty, the answer at the terminal.
std::string askUnlessGiven(const std::string& given, const std::string& option, const std::string& question);

} // namespace tarn
