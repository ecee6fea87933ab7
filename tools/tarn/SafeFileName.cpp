#include "SafeFileName.h"

#include "Host.h"
#include "Text.h"
#include <algorithm>
#include <utf8.h>

namespace tarn {

namespace {

// Leaves room for the number of a duplicate below the 255 bytes that file systems allow.
constexpr std::size_t longestName = 200;

bool isLetter(char byte)
{
    return (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z');
}

std::string withoutFolders(std::string_view name)
{
    name.remove_prefix(std::min(name.find_last_of("/\\") + 1, name.size()));
    if (name.size() >= 2 && isLetter(name[0]) && name[1] == ':') {
        name.remove_prefix(2);
    }
    return std::string(name);
}

// Among the control characters, those that turn the direction of writing can disguise an extension.
bool isInvisible(char32_t character)
{
    return isControl(character) || (character >= 0x200B && character <= 0x200D) ||
           (character >= 0x2060 && character <= 0x2065) || character == 0xFEFF;
}

std::string withPlainCharacters(std::string_view name)
{
    std::u32string characters = toCharacters(name);
    std::erase_if(characters, isInvisible);
    for (auto& character : characters) {
        if (std::u32string_view(U"<>:\"|?*").find(character) != std::u32string_view::npos) {
            character = U'_';
        }
    }
    return utf8::utf32to8(characters);
}

void trim(std::string& name)
{
    name.erase(name.find_last_not_of(". ") + 1);
    name.erase(0, std::min(name.find_first_not_of(' '), name.size()));
}

bool isDeviceName(const std::string& name)
{
    std::string device = host::foldCase(name.substr(0, name.find('.')));
    device.erase(device.find_last_not_of(' ') + 1);
    for (const auto* port : {"COM", "LPT"}) {
        if (device.starts_with(port)) {
            device.erase(0, 3);
            const bool isDigit = device.size() == 1 && device[0] >= '0' && device[0] <= '9';
            return isDigit || device == "\u00B9" || device == "\u00B2" || device == "\u00B3"; // superscript ones
        }
    }
    return std::set<std::string>{"CON", "PRN", "AUX", "NUL", "CONIN$", "CONOUT$"}.contains(device);
}

std::pair<std::string, std::string> splitExtension(const std::string& name)
{
    const auto dot = name.rfind('.');
    const bool hasExtension = dot != name.npos && dot > 0 && name.size() - dot <= 20;
    return {name.substr(0, hasExtension ? dot : name.npos), hasExtension ? name.substr(dot) : ""};
}

std::string shortened(const std::string& name)
{
    if (name.size() <= longestName) {
        return name;
    }
    auto [base, extension] = splitExtension(name);
    std::size_t end = longestName - extension.size();
    while (end > 0 && (static_cast<unsigned char>(base[end]) & 0xC0u) == 0x80) {
        --end; // not in the middle of a character
    }
    base.resize(end);
    trim(base);
    return base + extension;
}

std::string generatedName(int number, std::string_view contentType)
{
    std::string_view extension = ".bin";
    if (sameIgnoringCase(contentType.substr(0, 9), "text/html")) {
        extension = ".html";
    } else if (sameIgnoringCase(contentType.substr(0, 5), "text/")) {
        extension = ".txt";
    }
    return "item-" + std::to_string(number) + std::string(extension);
}

} // namespace

std::string SafeFileNames::next(std::string_view itemName, std::string_view contentType)
{
    ++itemNumber_;
    std::string name = withPlainCharacters(withoutFolders(itemName));
    trim(name);
    if (name.empty()) {
        name = generatedName(itemNumber_, contentType);
    }
    // Neither a hidden file nor something that a command takes for an option.
    if (name[0] == '.' || name[0] == '-') {
        name[0] = '_';
    }
    name = shortened(name);
    if (isDeviceName(name)) {
        name.insert(name.begin(), '_');
    }

    std::string unique = name;
    const auto [base, extension] = splitExtension(name);
    for (int number = 2; !taken_.insert(host::foldCase(unique)).second; ++number) {
        unique = base;
        unique.append(" (").append(std::to_string(number)).append(")").append(extension);
    }
    return unique;
}

} // namespace tarn
