#include "Command.h"
#include "Failure.h"

namespace tarn {

namespace {

struct BodyOptions : ConfigOptions
{
    std::string locale = "en";
    bool html = false;
};

void features(Context& context, const ConfigOptions& options)
{
    const KeyServerFeatures found = context.client.features(options.configFile());
    const auto word = [](bool on) { return on ? "yes" : "no"; };
    Table table({"FEATURE", "SUPPORTED"});
    table.add({"tells when a message was read", word(found.readByEnabled)});
    table.add({"expires messages", word(found.expirationSupported)});
    table.add({"localized message texts", word(found.localizedTextEnabled)});
    context.output.result(table.text(), {{"readByEnabled", found.readByEnabled},
                                         {"expirationSupported", found.expirationSupported},
                                         {"localizedTextEnabled", found.localizedTextEnabled}});
}

void locales(Context& context, const ConfigOptions& options)
{
    Table table({"LOCALE", "NAME"});
    nlohmann::json names = nlohmann::json::object();
    for (const auto& [locale, name] : context.client.locales(options.configFile())) {
        table.add({locale, name});
        names[locale] = name;
    }
    context.output.result(table.text(), {{"locales", names}});
}

void body(Context& context, const BodyOptions& options)
{
    const MessageBody found = context.client.messageBody(options.locale, options.configFile());
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

void addKeyServerCommands(Parser& program, Context& context)
{
    auto [featuresParser, featuresOptions] =
        addCommand(program, context, "features", "List what the key server supports", features);
    featuresParser.config(featuresOptions);

    auto [localesParser, localesOptions] =
        addCommand(program, context, "locales", "List the locales that the key server has texts in", locales);
    localesParser.config(localesOptions);

    auto [parser, options] =
        addCommand(program, context, "body", "Print the message text that goes with an envelope", body);
    parser.text("--locale", "LOCALE", options.locale, "Such as de");
    parser.flag("--html", options.html, "Print the HTML text instead of the plain one");
    parser.config(options);
}

} // namespace tarn
