#include "Command.h"
#include "Failure.h"
#include "Files.h"
#include "Text.h"

namespace tarn {

namespace {

struct KeyServerOptions
{
    std::string config;
    std::string locale;
    bool html = false;
};

void features(Context& context, const KeyServerOptions& options)
{
    const KeyServerFeatures found = context.client.features(absolutePath(options.config));
    const auto word = [](bool on) { return on ? "yes" : "no"; };
    Table table({"FEATURE", "SUPPORTED"});
    table.add({"tells when a message was read", word(found.readByEnabled)});
    table.add({"expires messages", word(found.expirationSupported)});
    table.add({"localized message texts", word(found.localizedTextEnabled)});
    context.output.result(table.text(), {{"readByEnabled", found.readByEnabled},
                                         {"expirationSupported", found.expirationSupported},
                                         {"localizedTextEnabled", found.localizedTextEnabled}});
}

void locales(Context& context, const KeyServerOptions& options)
{
    Table table({"LOCALE", "NAME"});
    nlohmann::json names = nlohmann::json::object();
    for (const auto& [locale, name] : context.client.locales(absolutePath(options.config))) {
        table.add({locale, name});
        names[locale] = name;
    }
    context.output.result(table.text(), {{"locales", names}});
}

void body(Context& context, const KeyServerOptions& options)
{
    const MessageBody found = context.client.messageBody(options.locale, absolutePath(options.config));
    if (found.text.empty() && found.html.empty()) {
        throw Failure(Exit::refused, "the key server has no texts in the locale \"" + options.locale + "\"");
    }
    std::string text = options.html ? found.html : found.text;
    if (!text.ends_with('\n')) {
        text += '\n';
    }
    context.output.document(text, {{"locale", options.locale}, {"text", found.text}, {"html", found.html}});
}

} // namespace

void addKeyServerCommands(CLI::App& app, Context& context)
{
    const auto options = std::make_shared<KeyServerOptions>();
    options->locale = "en";
    auto* featuresCommand = app.add_subcommand("features", "Ask what the key server can do (its whole table: --log)");
    addConfigOption(featuresCommand, options->config);
    onRun(featuresCommand, context, options, features);

    auto* localesCommand = app.add_subcommand("locales", "List the locales that the key server has texts in");
    addConfigOption(localesCommand, options->config);
    onRun(localesCommand, context, options, locales);

    auto* bodyCommand = app.add_subcommand("body", "Print the text that stands around an envelope");
    bodyCommand->add_option("--locale", options->locale, "Such as de")->capture_default_str();
    bodyCommand->add_flag("--html", options->html, "Print the HTML text instead of the plain one");
    addConfigOption(bodyCommand, options->config);
    onRun(bodyCommand, context, options, body);
}

} // namespace tarn
