"""The texts around an envelope, in several languages."""

import re
from dataclasses import dataclass
from html import escape

from .texts import normalized


@dataclass(frozen=True)
class Language:
    locale: str
    name: str  # in its own script
    direction: str
    sender: str
    subject: str
    body: str

    def plain_body(self, sender: str = "", subject: str = "") -> str:
        """With sender and subject above when a sender is given."""
        heads = f"{self.sender}: {sender}\n{self.subject}: {subject}\n\n" if sender else ""
        return f"{heads}{self.body}\n"

    def html_body(self, sender: str = "", subject: str = "") -> str:
        heads = ""
        if sender:
            heads = f"<p>{escape(f'{self.sender}: {sender}')}<br>{escape(f'{self.subject}: {subject}')}</p>\n"
        return (f'<!DOCTYPE html>\n<html lang="{self.locale}" dir="{self.direction}">\n'
                f'<head><meta charset="utf-8"></head>\n<body>\n{heads}<p>{escape(self.body)}</p>\n'
                "</body>\n</html>\n")


LANGUAGES = {language.locale: language for language in (
    Language("en", "English", "ltr", "From", "Subject",
             "🔒 You have received a secure message. Open the attached file with your mail program's plug-in."),
    Language("ar", "العربية", "rtl", "من", "الموضوع",
             "لقد تلقيت رسالة آمنة. افتح الملف المرفق باستخدام المكون الإضافي لبرنامج البريد."),
    Language("de", "Deutsch", "ltr", "Von", "Betreff",
             "Sie haben eine sichere Nachricht erhalten. Öffnen Sie die angehängte Datei mit der Erweiterung Ihres "
             "Mailprogramms."),
    Language("fr", "Français", "ltr", "De", "Objet",
             "Vous avez reçu un message sécurisé. Ouvrez le fichier joint avec l’extension de votre messagerie."),
    Language("ja", "日本語", "ltr", "差出人", "件名",
             "保護されたメッセージが届いています。𠮷田様ほか、宛先の方は添付ファイルをメールソフトのプラグインで開いてください。"),
)}


def language_of(locale: str) -> Language:
    """The language of a locale such as de or de_AT; English where there is none."""
    return LANGUAGES.get(normalized(re.split("[-_]", locale)[0]), LANGUAGES["en"])
