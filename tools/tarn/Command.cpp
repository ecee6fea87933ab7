#include "Command.h"

#include "Files.h"
#include "Secrets.h"
#include <CLI/CLI.hpp>

namespace tarn {

std::string ConfigOptions::configFile() const
{
    return absolutePath(config);
}

Access AccessOptions::access(const std::string& user) const
{
    return {password(passwordFile, user), configFile()};
}

void Parser::argument(const std::string& name, std::string& value, const std::string& description, Needed needed)
{
    app_->add_option(name, value, description)->type_name("")->required(needed == Needed::yes);
}

void Parser::flag(const std::string& name, bool& value, const std::string& description)
{
    app_->add_flag(name, value, description);
}

void Parser::text(const std::string& name, const std::string& placeholder, std::string& value,
                  const std::string& description, Needed needed)
{
    auto* option = app_->add_option(name, value, description)->type_name(placeholder);
    option->required(needed == Needed::yes);
    if (!value.empty()) {
        option->capture_default_str();
    }
}

void Parser::text(const std::string& name, const std::string& placeholder, std::optional<std::string>& value,
                  const std::string& description)
{
    app_->add_option(name, value, description)->type_name(placeholder);
}

template <class Number>
void Parser::number(const std::string& name, const std::string& placeholder, Number& value, Number lowest,
                    Number highest, const std::string& description)
{
    app_->add_option(name, value, description)
        ->type_name(placeholder)
        ->check(CLI::Range(lowest, highest).description(""));
}

template void Parser::number(const std::string&, const std::string&, int&, int, int, const std::string&);
template void Parser::number(const std::string&, const std::string&, unsigned&, unsigned, unsigned, const std::string&);

void Parser::texts(const std::string& name, const std::string& placeholder, std::vector<std::string>& values,
                   const std::string& description)
{
    // One value for each option, so that an argument may follow it.
    app_->add_option(name, values, description + "; may be repeated")->type_name(placeholder)->allow_extra_args(false);
}

void Parser::addresses(const std::string& name, std::vector<std::string>& values, const std::string& description,
                       Needed needed)
{
    texts(name, "ADDRESS", values, description);
    app_->get_option(name)->delimiter(';')->required(needed == Needed::yes);
}

void Parser::envelope(std::string& file, Needed needed)
{
    argument("ENVELOPE", file, "File with the envelope; - is standard input", needed);
}

void Parser::config(ConfigOptions& options)
{
    text("--config", "FILE", options.config, "Envelope configuration file, which the daemon reads");
}

void Parser::passwordFile(std::string& file)
{
    text("--password-file", "FILE", file,
         "File whose first line is the password; without it TARN_PASSWORD or a hidden prompt");
}

void Parser::access(AccessOptions& options)
{
    passwordFile(options.passwordFile);
    config(options);
}

Parser Parser::command(const std::string& name, const std::string& description, std::function<void()> onChosen)
{
    auto* command = app_->add_subcommand(name, description)->group("Commands");
    command->callback(std::move(onChosen));
    command->footer("\nAlso --json, --log and --timeout, as with every command.");
    return Parser(*command);
}

} // namespace tarn
