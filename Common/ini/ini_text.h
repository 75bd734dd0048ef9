#pragma once

#include <cctype>
#include <cstddef>
#include <cstring>

/// What the reader of INI files and the access to them share. Internal.
namespace krutein::ini {

/// Size of the reader's line buffer, and how many bytes of a name count.
constexpr std::size_t kLineBytes = 1024;

/// A name in lower case, cut at kLineBytes bytes. Needs no memory, so that no lookup can fail for want of it.
class LowerName {
 public:
    explicit LowerName(const char* name) {
        for (; *name != '\0' && m_size < kLineBytes; ++name) {
            const auto c = static_cast<unsigned char>(*name);
            m_text[m_size++] = static_cast<char>(c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : c);
        }
        m_text[m_size] = '\0';
    }

    const char* Text() const { return m_text; }
    /// Without the NUL.
    std::size_t Bytes() const { return m_size; }

 private:
    std::size_t m_size = 0;
    char m_text[kLineBytes + 1];
};

inline bool IsSpace(char c) {
    return std::isspace(static_cast<unsigned char>(c)) != 0;
}

/// Removes white space at both ends, in place. \return the length that is left.
inline std::size_t Strip(char* text) {
    std::size_t end = std::strlen(text);
    while (end > 0 && IsSpace(text[end - 1]))
        --end;
    std::size_t begin = 0;
    while (begin < end && IsSpace(text[begin]))
        ++begin;
    std::memmove(text, text + begin, end - begin);
    text[end - begin] = '\0';
    return end - begin;
}

/// Reports through the callback that iniparser_set_error_callback has set.
using ErrorCallback = int (*)(const char* format, ...);
ErrorCallback Report();

}  // namespace krutein::ini
