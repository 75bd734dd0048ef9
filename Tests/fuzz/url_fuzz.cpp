// URL decoding: any encoding of a text decodes to it, and any text decodes by the rule, never beyond its end.

#include <string>

#include "Common/std/std_string.h"
#include "Tests/fuzz/Fuzz.h"

namespace {

/// Each byte as %XX, or as itself where the bits of `plain` say so. A '%' is always encoded.
std::string Encode(const std::string& text, unsigned plain, const char* digits) {
    std::string encoded;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto byte = static_cast<unsigned char>(text[i]);
        if (byte != '%' && (plain >> (i % 8) & 1U) != 0) {
            encoded += text[i];
        } else {
            encoded.append({'%', digits[byte >> 4U], digits[byte & 0xFU]});
        }
    }
    return encoded;
}

unsigned DigitAt(const std::string& text, std::size_t index) {
    const std::string digits = "0123456789abcdef";
    const std::size_t digit =
        index < text.size() ? digits.find(AsciiLower(text.substr(index, 1))) : std::string::npos;
    return digit == std::string::npos ? 255 : static_cast<unsigned>(digit);
}

std::string Decode(const std::string& text) {
    std::string decoded;
    for (std::size_t at = 0; at < text.size(); ++at) {
        if (text[at] != '%') {
            decoded += text[at];
            continue;
        }
        decoded += static_cast<char>(DigitAt(text, at + 1) * 16 + DigitAt(text, at + 2));
        at += 2;
    }
    return decoded;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzInput input(data, size);
    const unsigned plain = input.Byte();
    const std::string text = input.Rest();
    Require(STD_UrlDecodingA(Encode(text, plain, "0123456789abcdef")) == text,
            "what was encoded decodes to it");
    Require(STD_UrlDecodingA(Encode(text, plain, "0123456789ABCDEF")) == text, "capital digits count alike");
    Require(STD_UrlDecodingA(text) == Decode(text), "any text decodes by the rule");
    return 0;
}
