#include <sys/stat.h>

#include <cstdio>
#include <cstring>
#include <memory>

#include "Common/ini/dictionary_builder.h"
#include "Common/ini/ini_text.h"
#include "Common/ini/iniparser.h"

namespace {

using krutein::ini::IsSpace;
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

/// What a line says. The line buffer bounds both fields.
struct Line {
    char name[kLineBytes];  ///< of the section or key
    char value[kLineBytes];
};

void Copy(const char* from, std::size_t length, char (&to)[kLineBytes]) {
    std::memcpy(to, from, length);
    to[length] = '\0';
}

const char* SkipSpace(const char* text) {
    while (*text != '\0' && IsSpace(*text))
        ++text;
    return text;
}

/// The text behind the first quote, as far as the second one or, without it, the end. \return false when
/// there is none: two quotes with nothing between are no quoted value.
bool ReadQuoted(const char* text, char (&value)[kLineBytes]) {
    const char quotes[] = {text[0], '\0'};
    if (text[0] != '"' && text[0] != '\'') return false;
    const std::size_t length = std::strcspn(text + 1, quotes);
    if (length > 0) Copy(text + 1, length, value);
    return length > 0;
}

/// Up to a comment.
void ReadPlain(const char* text, char (&value)[kLineBytes]) {
    Copy(text, std::strcspn(text, ";#"), value);
    Strip(value);
    if (std::strcmp(value, "\"\"") == 0 || std::strcmp(value, "''") == 0) value[0] = '\0';
}

LineKind ReadValue(const char* text, Line& line) {
    const char* const equals = std::strchr(text, '=');
    if (equals == nullptr || equals == text) return LineKind::kError;
    Copy(text, static_cast<std::size_t>(equals - text), line.name);
    const char* const value = SkipSpace(equals + 1);
    if (!ReadQuoted(value, line.value)) ReadPlain(value, line.value);
    return LineKind::kValue;
}

/// \param text  stripped and not empty.
LineKind Read(const char* text, Line& line) {
    if (text[0] == '#' || text[0] == ';') return LineKind::kComment;
    LineKind kind = LineKind::kSection;
    if (text[0] == '[' && text[std::strlen(text) - 1] == ']') {
        Copy(text + 1, std::strcspn(text + 1, "]"), line.name);
    } else {
        kind = ReadValue(text, line);
    }
    if (kind != LineKind::kError) Strip(line.name);
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
    Reader(const char* path, FILE* file, dictionary& d) : m_path(path), m_file(file), m_entries(d) {}

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
                return EnterSection(LowerName(line.name));
            case LineKind::kValue:
                return Store(LowerName(line.name), line.value);
            case LineKind::kError:
                Report()("iniparser: syntax error in %s (%d):\n-> %s\n", m_path, m_number, text);
                ++m_errors;
                return true;
        }
        return true;
    }

    bool EnterSection(const LowerName& name) {
        m_sectionBytes = name.Bytes();
        std::memcpy(m_section, name.Text(), m_sectionBytes + 1);
        return m_entries.Set(m_section, nullptr) == 0;
    }

    bool Store(const LowerName& key, const char* value) {
        char entry[2 * (kLineBytes + 1)];
        std::memcpy(entry, m_section, m_sectionBytes);
        entry[m_sectionBytes] = ':';
        std::memcpy(entry + m_sectionBytes + 1, key.Text(), key.Bytes() + 1);
        return m_entries.Set(entry, value) == 0;
    }

    const char* m_path;
    FILE* m_file;
    krutein::ini::DictionaryBuilder m_entries;
    char m_section[kLineBytes + 1] = {};
    std::size_t m_sectionBytes = 0;
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
    if (d == nullptr || !Reader(path, file.get(), *d).ReadAll()) return nullptr;
    return d.release();
}
