#include "Output.h"

#include "Host.h"
#include "ProcessEnd.h"
#include "Text.h"
#include <algorithm>
#include <cerrno>
#include <cstring>
#include <iostream>

namespace tarn {

namespace {

// Every object has these four members. Other characters than ASCII's are escaped, so that none controls a terminal.
void print(Exit code, nlohmann::json object)
{
    // A signal that came while files were being finished ends the process once they are.
    const int signal = notedInterrupt();
    object["exitCode"] = signal != 0 ? 128 + signal : static_cast<int>(code);
    object["status"] = object.value("status", code == Exit::success ? nlohmann::json(0) : nlohmann::json());
    object["error"] = object.value("error", signal != 0 ? nlohmann::json("ended by a signal") : nlohmann::json());
    object["message"] = object.value("message", nlohmann::json());
    const std::string text = object.dump(2, ' ', true, nlohmann::json::error_handler_t::replace) + "\n";
    reportEndAsJson(false);
    Output::raw(text);
}

std::size_t width(const std::string& cell)
{
    return toCharacters(cell).size();
}

} // namespace

Table::Table(std::vector<std::string> titles)
{
    add(std::move(titles));
}

void Table::add(std::vector<std::string> row)
{
    for (auto& cell : row) {
        cell = printable(cell);
    }
    rows_.push_back(std::move(row));
}

std::string Table::text() const
{
    std::vector<std::size_t> widths(rows_.front().size());
    for (const auto& row : rows_) {
        for (std::size_t i = 0; i < row.size(); ++i) {
            widths[i] = std::max(widths[i], width(row[i]));
        }
    }
    std::string text;
    for (const auto& row : rows_) {
        std::string line;
        for (std::size_t i = 0; i < row.size(); ++i) {
            line += row[i] + std::string(widths[i] - width(row[i]) + 2, ' ');
        }
        line.erase(line.find_last_not_of(' ') + 1);
        text += line + "\n";
    }
    return text;
}

void Output::result(const std::string& text, nlohmann::json object) const
{
    if (asJson) {
        print(Exit::success, std::move(object));
    } else {
        lines(text);
    }
}

void Output::document(const std::string& text, nlohmann::json object) const
{
    if (asJson || host::isTerminal(host::Stream::output)) {
        result(text, std::move(object));
    } else {
        raw(text);
    }
}

void Output::failure(const Failure& failure) const
{
    note(failure.what());
    if (asJson) {
        nlohmann::json object = failure.details;
        object["error"] = failure.what();
        print(failure.exitCode, std::move(object));
    }
}

void Output::lines(const std::string& text)
{
    raw(printableLines(text));
}

void Output::note(const std::string& text)
{
    std::cerr << "tarn: " << printable(text) << std::endl;
}

void Output::log(const char* function, const std::string& text)
{
    std::cerr << "--- " << function << " ---\n" << printableLines(text) << std::flush;
}

void Output::raw(const std::string& bytes)
{
    errno = 0;
    std::cout.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    if (!std::cout.flush()) {
        throw Failure(Exit::file, std::string("standard output cannot be written: ") +
                                      (errno ? std::strerror(errno) : "unknown reason"));
    }
}

} // namespace tarn
