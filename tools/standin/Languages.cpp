#include "Languages.h"

#include "Texts.h"

#include <algorithm>
#include <array>

namespace standin {

namespace {

constexpr std::array all = {
    Language{"en", "English", "ltr", "From", "Subject",
             "🔒 You have received a secure message. Open the attached file with your mail program's plug-in."},
    Language{"ar", "العربية", "rtl", "من", "الموضوع",
             "لقد تلقيت رسالة آمنة. افتح الملف المرفق باستخدام المكون الإضافي لبرنامج البريد."},
    Language{"de", "Deutsch", "ltr", "Von", "Betreff",
             "Sie haben eine sichere Nachricht erhalten. Öffnen Sie die angehängte Datei mit der Erweiterung "
             "Ihres Mailprogramms."},
    Language{"el", "Ελληνικά", "ltr", "Από", "Θέμα",
             "Λάβατε ένα ασφαλές μήνυμα. Ανοίξτε το συνημμένο αρχείο με το πρόσθετο του προγράμματος "
             "αλληλογραφίας σας."},
    Language{"fr", "Français", "ltr", "De", "Objet",
             "Vous avez reçu un message sécurisé. Ouvrez le fichier joint avec l’extension de votre messagerie."},
    Language{"ja", "日本語", "ltr", "差出人", "件名",
             "保護されたメッセージが届いています。𠮷田様ほか、宛先の方は添付ファイルをメールソフトの"
             "プラグインで開いてください。"},
    Language{"ru", "Русский", "ltr", "От", "Тема",
             "Вы получили защищённое сообщение. Откройте вложенный файл с помощью модуля вашей почтовой "
             "программы."},
    Language{"zh", "中文", "ltr", "发件人", "主题", "您收到了一封安全邮件。请使用邮件程序的插件打开附件。"},
};

std::string headLine(std::string_view label, std::string_view value)
{
    return std::string(label) + ": " + std::string(value);
}

} // namespace

std::span<const Language> languages()
{
    return all;
}

const Language& languageOf(std::string_view locale)
{
    const auto language = normalAddress(locale.substr(0, locale.find_first_of("-_")));
    const auto found = std::ranges::find(all, std::string_view(language), &Language::locale);
    return found == all.end() ? all.front() : *found;
}

std::string plainBody(const Language& text, std::string_view sender, std::string_view subject)
{
    std::string body;
    if (!sender.empty()) {
        body = headLine(text.from, sender) + "\n" + headLine(text.subject, subject) + "\n\n";
    }
    return body + std::string(text.body) + "\n";
}

std::string htmlBody(const Language& text, std::string_view sender, std::string_view subject)
{
    std::string body = "<!DOCTYPE html>\n<html lang=\"" + std::string(text.locale) + "\" dir=\"" +
                       std::string(text.direction) + "\">\n<head><meta charset=\"utf-8\"></head>\n<body>\n";
    if (!sender.empty()) {
        body += "<p>" + escapeHtml(headLine(text.from, sender)) + "<br>" + escapeHtml(headLine(text.subject, subject)) +
                "</p>\n";
    }
    return body + "<p>" + escapeHtml(text.body) + "</p>\n</body>\n</html>\n";
}

} // namespace standin
