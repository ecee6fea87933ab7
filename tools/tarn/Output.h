#pragma once

#include "Failure.h"
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace tarn {

// Plain columns, each as wide as its widest cell. Cells are made printable.
class Table
{
public:
    explicit Table(std::vector<std::string> titles);
    void add(std::vector<std::string> row);
    std::string text() const;

private:
    std::vector<std::vector<std::string>> rows_;
};

// Results go to standard output, as text for people or as one JSON object; everything else to standard error.
class Output
{
public:
    bool asJson = false;

    // A successful command's result in both forms, the text made of printable lines.
    void result(const std::string& text, nlohmann::json object) const;

    // The same for a text that is passed on as it is, unless it would go to a terminal.
    void document(const std::string& text, nlohmann::json object) const;

    // The message of what ended the command; for scripts also as an object on standard output.
    void failure(const Failure& failure) const;

    static void raw(const std::string& bytes);
    static void lines(const std::string& text);
    static void note(const std::string& text);                      // a line on standard error
    static void log(const char* function, const std::string& text); // an operation log, on standard error
};

} // namespace tarn
