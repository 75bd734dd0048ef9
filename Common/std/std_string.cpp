#include "Common/std/std_string.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <cwctype>
#include <memory>

#include "Common/std/format.h"
#include "Common/std/text.h"

namespace {

constexpr std::size_t kFormatBufferChars = kFormatMaxChars + 1;

char UpperA(char c) {
    return static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
}

wchar_t UpperW(wchar_t c) {
    return static_cast<wchar_t>(std::towupper(static_cast<std::wint_t>(c)));
}

template <typename Text, typename Upper>
int CompareUpper(Text a, Text b, Upper upper) {
    std::transform(a.begin(), a.end(), a.begin(), upper);
    std::transform(b.begin(), b.end(), b.begin(), upper);
    return a.compare(b);
}

/// atoi without its undefined range: strtol saturates, and the cut to int is that of the platform.
int NumberOf(const std::string& text) {
    return static_cast<int>(std::strtol(text.c_str(), nullptr, 10));
}

constexpr unsigned kNotHex = 255;

unsigned HexDigit(const std::string& text, std::size_t index) {
    if (index >= text.size()) return kNotHex;
    const char c = text[index];
    if (c >= '0' && c <= '9') return static_cast<unsigned>(c - '0');
    if (c >= 'a' && c <= 'f') return static_cast<unsigned>(c - 'a') + 10;
    if (c >= 'A' && c <= 'F') return static_cast<unsigned>(c - 'A') + 10;
    return kNotHex;
}

}  // namespace

namespace krutein {

bool FormatWhole(std::string& out, const char* format, ...) {
    char buffer[kFormatBufferChars];
    std::va_list arguments;
    va_start(arguments, format);
    const int length = std::vsnprintf(buffer, sizeof buffer, format, arguments);
    va_end(arguments);
    const bool fits = length >= 0 && length <= kFormatMaxChars;
    out.assign(fits ? buffer : "");
    return fits;
}

}  // namespace krutein

char* STD_FormatArgBufferA(const char* format, std::va_list arguments) {
    auto buffer = std::make_unique<char[]>(kFormatBufferChars);
    if (format != nullptr) std::vsnprintf(buffer.get(), kFormatBufferChars, format, arguments);
    return buffer.release();
}

wchar_t* STD_FormatArgBufferW(const wchar_t* /*format*/, std::va_list /*arguments*/) {
    return std::make_unique<wchar_t[]>(kFormatBufferChars).release();
}

std::string STD_FormatA(const char* format, ...) {
    if (format == nullptr) return {};
    std::va_list arguments;
    va_start(arguments, format);
    const std::unique_ptr<char[]> buffer(STD_FormatArgBufferA(format, arguments));
    va_end(arguments);
    return buffer.get();
}

std::wstring STD_FormatW(const wchar_t* /*format*/, ...) {
    return {};
}

int STD_CompareNoCaseA(std::string a, std::string b) {
    return CompareUpper(std::move(a), std::move(b), UpperA);
}

int STD_CompareNoCaseW(std::wstring a, std::wstring b) {
    return CompareUpper(std::move(a), std::move(b), UpperW);
}

void STD_ReplaceAllA(std::string& text, std::string from, std::string to) {
    krutein::text::ReplaceAll(text, from, to);
}

void STD_ReplaceAllW(std::wstring& text, std::wstring from, std::wstring to) {
    krutein::text::ReplaceAll(text, from, to);
}

void STD_SplitA(std::string text, std::string delimiters, std::vector<std::string>& out) {
    krutein::text::Split(text, delimiters, out);
}

void STD_SplitW(std::wstring text, std::wstring delimiters, std::vector<std::wstring>& out) {
    krutein::text::Split(text, delimiters, out);
}

std::string STD_FormatVectorA(const std::vector<std::string>& items, std::string separator) {
    return krutein::text::Join(items, separator);
}

std::wstring STD_FormatVectorW(const std::vector<std::wstring>& items, std::wstring separator) {
    return krutein::text::Join(items, separator);
}

void STD_TrimA(std::string& text) {
    krutein::text::Trim(text);
}

void STD_TrimW(std::wstring& text) {
    krutein::text::Trim(text);
}

std::string STD_GetMidStrA(std::string source, std::string begin, std::string end, int start) {
    return krutein::text::Between(source, begin, end, start);
}

std::wstring STD_GetMidStrW(std::wstring source, std::wstring begin, std::wstring end, int start) {
    return krutein::text::Between(source, begin, end, start);
}

void STD_RemoveLastCharIfExistA(std::string& text, char c) {
    krutein::text::DropLast(text, c);
}

void STD_RemoveLastCharIfExistW(std::wstring& text, char c) {
    krutein::text::DropLast(text, static_cast<wchar_t>(static_cast<signed char>(c)));
}

void STD_EnsureLastCharExistA(std::string& text, char c) {
    krutein::text::EnsureLast(text, c);
}

void STD_EnsureLastCharExistW(std::wstring& text, wchar_t c) {
    krutein::text::EnsureLast(text, c);
}

bool STD_IsNumA(std::string text) {
    return !text.empty() && text.find_first_not_of("0123456789") == std::string::npos;
}

bool STD_IsNumW(std::wstring text) {
    return !text.empty();
}

int STD_GetNumA(std::string text) {
    return NumberOf(text);
}

int STD_GetNumW(std::wstring /*text*/) {
    return 0;
}

bool STD_IsAllPrintCharInStrA(std::string text) {
    return std::all_of(text.begin(), text.end(),
                       [](char c) { return std::isprint(static_cast<unsigned char>(c)) != 0; });
}

bool STD_IsAllPrintCharInStrW(std::wstring text) {
    return STD_IsAllPrintCharInStrA(STD_CW2A(std::move(text)));
}

std::string STD_UrlDecodingA(std::string text) {
    std::string result;
    result.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '%') {
            result.push_back(text[i]);
            continue;
        }
        const unsigned code = HexDigit(text, i + 1) * 16 + HexDigit(text, i + 2);
        result.push_back(static_cast<char>(static_cast<unsigned char>(code & 0xFFU)));
        i += 2;
    }
    return result;
}

CVerSringCompare::CVerSringCompare(std::string version) : m_version(std::move(version)) {
    std::vector<std::string> items;
    STD_SplitA(m_version, ".", items);
    unsigned char* const parts[] = {&m_major, &m_minor, &m_third, &m_fourth};
    for (std::size_t i = 0; i < std::min(items.size(), std::size(parts)); ++i) {
        *parts[i] = static_cast<unsigned char>(NumberOf(items[i]));
    }
}

int STD_CompareVerionA(std::string a, std::string b) {
    const CVerSringCompare left(std::move(a));
    const CVerSringCompare right(std::move(b));
    if (left.m_major != right.m_major) return left.m_major - right.m_major;
    if (left.m_minor != right.m_minor) return left.m_minor - right.m_minor;
    if (left.m_third != right.m_third) return left.m_third - right.m_third;
    return left.m_fourth - right.m_fourth;
}

void* STD_Malloc(int size, unsigned char fill) {
    if (size < 0) return nullptr;
    void* const memory = std::malloc(static_cast<std::size_t>(size));
    if (memory != nullptr) std::memset(memory, fill, static_cast<std::size_t>(size));
    return memory;
}

std::string STD_ToUtf8A(std::string text) {
    return text;
}

std::string STD_Utf8ToStringA(std::string text) {
    return text;
}

std::wstring STD_CA2W(std::string /*text*/) {
    return {};
}

std::wstring STD_Utf8ToStringW(std::string /*text*/) {
    return {};
}

std::string STD_CW2A(std::wstring /*text*/) {
    return {};
}

std::string STD_ToUtf8W(std::wstring /*text*/) {
    return {};
}
