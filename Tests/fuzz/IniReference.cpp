#include "Tests/fuzz/IniReference.h"

#include <algorithm>
#include <cctype>
#include <cstdio>

#include "Tests/fuzz/Fuzz.h"

namespace {

constexpr std::size_t kLineBytes = 1024;  ///< with the NUL; a longer line counts as several

std::string Stripped(const std::string& text) {
    std::size_t begin = 0;
    std::size_t end = text.size();
    while (begin < end && std::isspace(static_cast<unsigned char>(text[begin])) != 0)
        ++begin;
    while (end > begin && std::isspace(static_cast<unsigned char>(text[end - 1])) != 0)
        --end;
    return text.substr(begin, end - begin);
}

struct Line {
    char name[kLineBytes] = {};
    char value[kLineBytes] = {};
};

/// \return false when no pattern fits.
bool Scan(const char* text, Line& line) {
    for (const char* const quoted : {"%1023[^=] = \"%1023[^\"]\"", "%1023[^=] = '%1023[^']'"}) {
        if (std::sscanf(text, quoted, line.name, line.value) == 2) return true;
    }
    if (std::sscanf(text, "%1023[^=] = %1023[^;#]", line.name, line.value) == 2) {
        const std::string value = Stripped(line.value);
        const bool isEmpty = value == "\"\"" || value == "''";
        std::snprintf(line.value, sizeof line.value, "%s", isEmpty ? "" : value.c_str());
        return true;
    }
    for (const char* const empty : {"%1023[^=] = %1023[;#]", "%1023[^=] %1023[=]"}) {
        if (std::sscanf(text, empty, line.name, line.value) != 2) continue;
        line.value[0] = '\0';
        return true;
    }
    return false;
}

/// One line without white space at its ends. \param section  the current one; changed by a section line.
bool Take(const std::string& text, std::string& section, IniReference::Entries& entries) {
    if (text.empty() || text[0] == ';' || text[0] == '#') return true;
    Line line;
    if (text[0] == '[' && text.back() == ']') {
        if (std::sscanf(text.c_str(), "[%1023[^]]", line.name) != 1) line.name[0] = '\0';
        section = AsciiLower(Stripped(line.name));
        entries[section] = std::nullopt;
        return true;
    }
    if (!Scan(text.c_str(), line)) return false;
    entries[section + ":" + AsciiLower(Stripped(line.name))] = line.value;
    return true;
}

/// Where the reading begins: behind a byte-order mark; at the end of a file that is too short for one.
std::size_t Begin(const std::string& content) {
    if (content.size() < 3) return content.size();
    return content.compare(0, 3, "\xEF\xBB\xBF") == 0 ? 3 : 0;
}

}  // namespace

bool IniReference::Read(const std::string& content, Entries& entries) {
    std::string section;
    bool isSyntax = true;
    for (std::size_t at = Begin(content); at < content.size();) {
        const std::size_t end = std::min(content.find('\n', at), content.size() - 1) + 1;
        std::string line = content.substr(at, std::min(end - at, kLineBytes - 1));
        at += line.size();
        line.resize(line.find('\0') == std::string::npos ? line.size() : line.find('\0'));
        isSyntax = Take(Stripped(line), section, entries) && isSyntax;
    }
    return isSyntax;
}
