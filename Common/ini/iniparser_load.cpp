#include <sys/stat.h>

#include <cstdio>
#include <cstring>
#include <memory>

#include "Common/ini/ini_text.h"
#include "Common/ini/iniparser.h"

namespace {

using krutein::ini::kLineBytes;
using krutein::ini::LowerName;
using krutein::ini::Report;
using krutein::ini::Strip;

constexpr int kEmptyLine = -2;
constexpr int kCommentLine = -3;

struct CloseStream {
    void operator()(FILE* file) const { std::fclose(file); }
};
using Stream = std::unique_ptr<FILE, CloseStream>;

struct FreeDictionary {
    void operator()(dictionary* d) const { dictionary_del(d); }
};
using Dictionary = std::unique_ptr<dictionary, FreeDictionary>;

enum class LineKind { kComment, kSection, kValue, kError };

/// What a line says. The line buffer bounds all fields.
struct Line {
    char name[kLineBytes] = {};  ///< of the section or key
    char value[kLineBytes] = {};
};

// The patterns are those of the syntax, in the order in which they are tried.

bool IsQuoted(const char* text, Line& line) {
    return std::sscanf(text, "%[^=] = \"%[^\"]\"", line.name, line.value) == 2 ||
           std::sscanf(text, "%[^=] = '%[^']'", line.name, line.value) == 2;
}

bool IsPlain(const char* text, Line& line) {
    return std::sscanf(text, "%[^=] = %[^;#]", line.name, line.value) == 2;
}

bool IsEmptyValue(const char* text, Line& line) {
    return std::sscanf(text, "%[^=] = %[;#]", line.name, line.value) == 2 ||
           std::sscanf(text, "%[^=] %[=]", line.name, line.value) == 2;
}

LineKind ReadValue(const char* text, Line& line) {
    if (IsQuoted(text, line)) return LineKind::kValue;
    if (IsPlain(text, line)) {
        Strip(line.value);
        // Two quotes with nothing between are an empty value, which the quoted patterns do not match.
        if (std::strcmp(line.value, "\"\"") == 0 || std::strcmp(line.value, "''") == 0) line.value[0] = '\0';
        return LineKind::kValue;
    }
    if (!IsEmptyValue(text, line)) return LineKind::kError;
    line.value[0] = '\0';
    return LineKind::kValue;
}

/// \param text  stripped and not empty.
LineKind Read(const char* text, Line& line) {
    if (text[0] == '#' || text[0] == ';') return LineKind::kComment;
    LineKind kind = LineKind::kSection;
    if (text[0] == '[' && text[std::strlen(text) - 1] == ']') {
        if (std::sscanf(text, "[%[^]]", line.name) != 1) line.name[0] = '\0';
    } else {
        kind = ReadValue(text, line);
    }
    Strip(line.name);
    return kind;
}

/// Skips a byte-order mark. A file of less than three bytes is at its end then.
void SkipByteOrderMark(FILE* file) {
    unsigned char mark[3] = {};
    if (std::fread(mark, 1, sizeof mark, file) != sizeof mark) return;
    if (std::memcmp(mark, "\xEF\xBB\xBF", sizeof mark) != 0) std::rewind(file);
}

class Reader {
 public:
    Reader(const char* path, FILE* file, dictionary* d) : m_path(path), m_file(file), m_dictionary(d) {}

    /// \return false when any line was no INI syntax.
    bool ReadAll() {
        SkipByteOrderMark(m_file);
        char line[kLineBytes] = {};
        while (NextLine(line)) {
            if (Take(line)) continue;
            Report()("iniparser: memory allocation failure\n");
            break;
        }
        return m_errors == 0;
    }

 private:
    /// Reads to the next line that is neither empty nor a comment.
    bool NextLine(char (&line)[kLineBytes]) {
        int kind = kEmptyLine;
        while (kind == kEmptyLine || kind == kCommentLine) {
            if (std::fgets(line, kLineBytes, m_file) == nullptr) return false;
            ++m_number;
            kind = iniparser_patch_2017_10_13(line);
        }
        return true;
    }

    /// \return false when it could not be stored.
    bool Take(const char* text) {
        Line line;
        switch (Read(text, line)) {
            case LineKind::kComment:
                return true;
            case LineKind::kSection:
                std::strcpy(m_section, LowerName(line.name).Text());
                return dictionary_set(m_dictionary, m_section, nullptr) == 0;
            case LineKind::kValue:
                return Store(LowerName(line.name).Text(), line.value);
            case LineKind::kError:
                Report()("iniparser: syntax error in %s (%d):\n-> %s\n", m_path, m_number, text);
                ++m_errors;
                return true;
        }
        return true;
    }

    bool Store(const char* key, const char* value) {
        char entry[2 * (kLineBytes + 1)];
        std::snprintf(entry, sizeof entry, "%s:%.*s", m_section, static_cast<int>(kLineBytes), key);
        return dictionary_set(m_dictionary, entry, value) == 0;
    }

    const char* m_path;
    FILE* m_file;
    dictionary* m_dictionary;
    char m_section[kLineBytes + 1] = {};
    int m_number = 0;
    int m_errors = 0;
};

/// A stream of a file; folders, which some systems open like files, are none.
Stream OpenFile(const char* path) {
    Stream file(path == nullptr ? nullptr : std::fopen(path, "r"));
    struct stat info {};
    if (file != nullptr && fstat(fileno(file.get()), &info) == 0 && S_ISDIR(info.st_mode)) file.reset();
    return file;
}

}  // namespace

int iniparser_patch_2017_10_13(char* line) {
    if (Strip(line) == 0) return kEmptyLine;
    return line[0] == ';' ? kCommentLine : 0;
}

dictionary* iniparser_load(const char* path) {
    const Stream file = OpenFile(path);
    if (file == nullptr) {
        Report()("iniparser: cannot open %s\n", path == nullptr ? "(null)" : path);
        return nullptr;
    }
    Dictionary d(dictionary_new(0));
    if (d == nullptr || !Reader(path, file.get(), d.get()).ReadAll()) return nullptr;
    return d.release();
}
