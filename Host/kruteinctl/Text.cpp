#include "Host/kruteinctl/Text.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>
#include <vector>

namespace {

constexpr char kEllipsis[] = "…";

/// Length of the UTF-8 sequence at `at`, 0 when it is broken, overlong or no character.
std::size_t SequenceLength(const std::string& text, std::size_t at, char32_t& character) {
    const auto byte = [&](std::size_t index) { return static_cast<unsigned char>(text[index]); };
    const unsigned char first = byte(at);
    std::size_t length = 1;
    char32_t least = 0;
    if (first < 0x80) {
        character = first;
        return 1;
    }
    if (first >= 0xC2 && first < 0xE0) {
        length = 2, least = 0x80, character = first & 0x1FU;
    } else if (first >= 0xE0 && first < 0xF0) {
        length = 3, least = 0x800, character = first & 0x0FU;
    } else if (first >= 0xF0 && first < 0xF5) {
        length = 4, least = 0x10000, character = first & 0x07U;
    } else {
        return 0;
    }
    if (at + length > text.size()) return 0;
    for (std::size_t i = at + 1; i < at + length; ++i) {
        if ((byte(i) & 0xC0U) != 0x80) return 0;
        character = (character << 6) | (byte(i) & 0x3FU);
    }
    const bool surrogate = character >= 0xD800 && character < 0xE000;
    return character < least || character > 0x10FFFF || surrogate ? 0 : length;
}

/// Control characters, and those that turn the direction of what follows or are not seen at all.
bool IsHarmful(char32_t c) {
    return c < 0x20 || (c >= 0x7F && c < 0xA0) || (c >= 0x200B && c <= 0x200F) ||
           (c >= 0x2028 && c <= 0x202E) || (c >= 0x2066 && c <= 0x2069) || c == 0xFEFF;
}

struct Range {
    char32_t first;
    char32_t last;
};

/// What takes two columns in every terminal: the scripts of East Asia, and pictures.
constexpr Range kWide[] = {{0x1100, 0x115F},   {0x2E80, 0xA4CF},   {0xAC00, 0xD7A3},  {0xF900, 0xFAFF},
                           {0xFE30, 0xFE6F},   {0xFF00, 0xFF60},   {0xFFE0, 0xFFE6},  {0x1F300, 0x1F64F},
                           {0x1F680, 0x1F6FF}, {0x1F900, 0x1FAFF}, {0x20000, 0x3FFFD}};

/// Marks that are drawn onto the character before them.
constexpr Range kCombining[] = {{0x0300, 0x036F}, {0x1AB0, 0x1AFF}, {0x20D0, 0x20FF},
                                {0xFE00, 0xFE0F}, {0xFE20, 0xFE2F}, {0xE0100, 0xE01EF}};

template <std::size_t Count>
bool IsIn(const Range (&ranges)[Count], char32_t c) {
    return std::any_of(std::begin(ranges), std::end(ranges),
                       [c](const Range& range) { return c >= range.first && c <= range.last; });
}

/// Columns that a character takes, whatever the locale: that of a job in the background is often none at all.
std::size_t WidthOf(char32_t c) {
    if (IsIn(kCombining, c)) return 0;
    return IsIn(kWide, c) ? 2 : 1;
}

struct Glyph {
    std::size_t begin;
    std::size_t length;
    std::size_t width;
};

std::vector<Glyph> GlyphsOf(const std::string& text) {
    std::vector<Glyph> glyphs;
    for (std::size_t at = 0; at < text.size();) {
        char32_t character = '?';
        const std::size_t length = SequenceLength(text, at, character);
        glyphs.push_back({at, length == 0 ? 1 : length, WidthOf(character)});
        at += glyphs.back().length;
    }
    return glyphs;
}

}  // namespace

std::string HumanBytes(std::uint64_t bytes) {
    if (bytes < 1000) return fmt::format("{} byte{}", bytes, bytes == 1 ? "" : "s");
    static constexpr const char* kUnits[] = {"kB", "MB", "GB", "TB", "PB", "EB"};
    auto amount = static_cast<double>(bytes) / 1000;
    std::size_t unit = 0;
    // 999.95 would be shown as 1000.0
    while (amount >= 999.95 && unit + 1 < std::size(kUnits)) {
        amount /= 1000;
        ++unit;
    }
    return fmt::format("{:.1f} {}", amount, kUnits[unit]);
}

std::string ExactBytes(std::uint64_t bytes) {
    return bytes < 1000 ? HumanBytes(bytes) : fmt::format("{} ({} bytes)", HumanBytes(bytes), bytes);
}

std::string HumanTime(std::chrono::seconds time) {
    const long long all = time.count() < 0 ? 0 : time.count();
    if (all < 3600) return fmt::format("{}:{:02}", all / 60, all % 60);
    return fmt::format("{}:{:02}:{:02}", all / 3600, all / 60 % 60, all % 60);
}

std::string Printable(const std::string& text) {
    std::string result;
    for (std::size_t at = 0; at < text.size();) {
        char32_t character = 0;
        const std::size_t length = SequenceLength(text, at, character);
        if (length == 0 || IsHarmful(character)) {
            result += '?';
        } else {
            result.append(text, at, length);
        }
        at += length == 0 ? 1 : length;
    }
    return result;
}

std::string LowerCase(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
    return text;
}

std::size_t Columns(const std::string& text) {
    std::size_t columns = 0;
    for (const Glyph& glyph : GlyphsOf(text))
        columns += glyph.width;
    return columns;
}

std::string Shortened(const std::string& text, std::size_t columns) {
    if (Columns(text) <= columns) return text;
    if (columns == 0) return "";
    const std::vector<Glyph> glyphs = GlyphsOf(text);
    const std::size_t kept = columns - 1;
    std::size_t head = 0;
    std::size_t headWidth = 0;
    while (headWidth + glyphs[head].width <= kept / 2)
        headWidth += glyphs[head++].width;
    std::size_t tail = glyphs.size();
    std::size_t tailWidth = 0;
    while (headWidth + tailWidth + glyphs[tail - 1].width <= kept)
        tailWidth += glyphs[--tail].width;
    const std::size_t tailBegin = tail == glyphs.size() ? text.size() : glyphs[tail].begin;
    return text.substr(0, glyphs[head].begin) + kEllipsis + text.substr(tailBegin);
}
