#include "Host/Archiver/BinaryPlistWriter.h"

#include <algorithm>
#include <limits>
#include <stdexcept>

#include "Host/Archiver/BinaryPlistFormat.h"

namespace krutein {
namespace {

using namespace bplist;

constexpr std::size_t kTypicalBytes = 640;
constexpr std::size_t kTypicalObjects = 48;
constexpr unsigned kOffsetBytes = 4;
constexpr unsigned kReferenceBytes = 1;

struct Width {
    unsigned exponent;  ///< that stands for it in an object's first byte
    unsigned bytes;
};

/// Numbers of 8 bytes have a sign, the narrower ones have none.
Width WidthOf(std::uint64_t value) {
    if (value <= 0xFF) return {0, 1};
    if (value <= 0xFFFF) return {1, 2};
    if (value <= 0xFFFFFFFF) return {2, 4};
    return {3, 8};
}

bool IsAscii(const std::string& text) {
    return std::all_of(text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

/// The code point that begins at `at`, which is moved behind it. Bytes that are no UTF-8 become U+FFFD.
char32_t NextCodePoint(const std::string& utf8, std::size_t& at) {
    constexpr char32_t kNoCharacter = 0xFFFD;
    const auto lead = static_cast<unsigned char>(utf8[at++]);
    if (lead < 0x80) return lead;
    if (lead < 0xC2 || lead > 0xF4) return kNoCharacter;
    const int following = lead < 0xE0 ? 1 : lead < 0xF0 ? 2 : 3;
    char32_t code = lead & (0x3FU >> following);
    for (int i = 0; i < following; ++i) {
        if (at == utf8.size() || (static_cast<unsigned char>(utf8[at]) & 0xC0) != 0x80) return kNoCharacter;
        code = code << 6 | (static_cast<unsigned char>(utf8[at++]) & 0x3FU);
    }
    return code;
}

std::u16string Utf16(const std::string& utf8) {
    std::u16string units;
    for (std::size_t at = 0; at < utf8.size();) {
        char32_t code = NextCodePoint(utf8, at);
        if (code > 0xFFFF) {
            code -= 0x10000;
            units.push_back(static_cast<char16_t>(0xD800 | code >> 10));
            code = 0xDC00 | (code & 0x3FF);
        }
        units.push_back(static_cast<char16_t>(code));
    }
    return units;
}

}  // namespace

BinaryPlistWriter::BinaryPlistWriter() {
    m_bytes.reserve(kTypicalBytes);
    m_offsets.reserve(kTypicalObjects);
    m_bytes = kMagic;
}

BinaryPlistWriter::Object BinaryPlistWriter::Number(std::uint64_t value) {
    const Width width = WidthOf(value);
    const Object object = Begin(kNumber, width.exponent);
    Append(value, width.bytes);
    return object;
}

BinaryPlistWriter::Object BinaryPlistWriter::Uid(std::uint8_t value) {
    const Object object = Begin(kUid, sizeof value - 1);
    Append(value, sizeof value);
    return object;
}

BinaryPlistWriter::Object BinaryPlistWriter::Text(const std::string& utf8) {
    if (IsAscii(utf8)) {
        const Object object = Begin(kAsciiText, utf8.size());
        m_bytes += utf8;
        return object;
    }
    const std::u16string units = Utf16(utf8);
    const Object object = Begin(kUtf16Text, units.size());
    for (const char16_t unit : units)
        Append(unit, sizeof unit);
    return object;
}

BinaryPlistWriter::Object BinaryPlistWriter::Array(const std::vector<Object>& elements) {
    const Object object = Begin(kArray, elements.size());
    m_bytes.append(elements.begin(), elements.end());
    return object;
}

BinaryPlistWriter::Object BinaryPlistWriter::Dictionary(
    const std::vector<std::pair<const char*, Object>>& members) {
    std::string keys;
    std::string values;
    for (const auto& [key, value] : members) {
        keys.push_back(static_cast<char>(Text(key)));
        values.push_back(static_cast<char>(value));
    }
    const Object object = Begin(kDictionary, members.size());
    m_bytes += keys + values;
    return object;
}

std::string BinaryPlistWriter::Finish(Object top) {
    const std::size_t offsets = m_bytes.size();
    for (const std::uint32_t offset : m_offsets)
        Append(offset, kOffsetBytes);
    m_bytes.append(kOffsetWidthAt, '\0');
    Append(kOffsetBytes, 1);
    Append(kReferenceBytes, 1);
    Append(m_offsets.size(), 8);
    Append(top, 8);
    Append(offsets, 8);
    return std::move(m_bytes);
}

BinaryPlistWriter::Object BinaryPlistWriter::Begin(unsigned type, std::uint64_t count) {
    if (m_offsets.size() > std::numeric_limits<Object>::max()) throw std::length_error("too many objects");
    if (m_bytes.size() > std::numeric_limits<std::uint32_t>::max()) throw std::length_error("too many bytes");
    const auto object = static_cast<Object>(m_offsets.size());
    m_offsets.push_back(static_cast<std::uint32_t>(m_bytes.size()));
    if (count < kCountFollows) {
        Append(type << 4 | count, 1);
        return object;
    }
    const Width width = WidthOf(count);
    Append(type << 4 | kCountFollows, 1);
    Append(kNumber << 4 | width.exponent, 1);
    Append(count, width.bytes);
    return object;
}

void BinaryPlistWriter::Append(std::uint64_t value, unsigned width) {
    for (unsigned shift = 8 * width; shift > 0; shift -= 8)
        m_bytes.push_back(static_cast<char>(value >> (shift - 8)));
}

}  // namespace krutein
