// The encoded configuration. The first byte of an input tells whether the rest is decoded as it is or encoded first,
// so that its contents, not only its form, are reached.
#include "Target.h"
#include "platform/Platform.h"
#include "text/Conversion.h"
#include "text/EnvelopeConfig.h"

using namespace Text;

namespace {

std::string encoded(std::string text)
{
    const std::string result = encodeCharCodes(text);
    demand(text.empty(), "encoding takes its text");
    demand(result.find_first_not_of("-0123456789&") == std::string::npos, "codes are signed numbers with their ends");
    demand(result.empty() || result.back() == '&', "every code has its end");
    return result;
}

// "key: : " decodes to an empty value, "key: " to nothing at all.
StringMap withoutEmptyValues(StringMap map)
{
    std::erase_if(map, [](const auto& entry) { return entry.second.empty(); });
    return map;
}

void checkWide(const StringMap& map)
{
    std::string plain;
    for (const auto& [key, value] : map) {
        plain += std::string(key.c_str()) + ": " + value.c_str() + "; ";
    }
    const auto size = static_cast<std::size_t>(Platform::utf8ToWide(plain.c_str(), -1, nullptr, 0));
    std::vector<WideChar> expected(size);
    utf8IntoWide(plain.c_str(), expected.data());
    std::vector<WideChar> out(size);
    formatConfigMapWide(map, out.data());
    demand(out == expected, "the wide form is the plain one, each text up to its zero");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size)
{
    if (size == 0) {
        return 0;
    }
    const std::string text(viewOf(bytes + 1, size - 1));
    const StringMap map = decodeConfigMap((bytes[0] & 1) != 0 ? encoded(text) : text);
    demand(decodeConfigMap(encoded(formatConfigMap(map))) == withoutEmptyValues(map),
           "written again, it decodes to the same");
    checkWide(map);
    return 0;
}

std::vector<std::string> seedInputs()
{
    const std::string plain = "hostname: keys.example; accountid: \xC3\xA4; empty: ; a: b: c; ";
    return {'\1' + plain, '\0' + encoded(plain), std::string("\0 -1&+300&x&&97", 15), "\1a:: ;b; : c; ", "\1"};
}
