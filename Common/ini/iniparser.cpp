#include "Common/ini/iniparser.h"

#include <cstdarg>
#include <cstdlib>
#include <cstring>

#include "Common/ini/ini_text.h"

namespace {

using krutein::ini::ErrorCallback;
using krutein::ini::LowerName;

int WriteToStandardError(const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    const int result = std::vfprintf(stderr, format, arguments);
    va_end(arguments);
    return result;
}

ErrorCallback g_report = WriteToStandardError;

/// Tells an absent key from one with a null value.
const char* InvalidKey() {
    static constexpr char kInvalid = '\0';
    return &kInvalid;
}

bool IsSection(const char* key) {
    return key != nullptr && std::strchr(key, ':') == nullptr;
}

/// What stands behind the section and the colon in a key of that section; null for other keys.
const char* NameWithin(const char* section, const char* key) {
    const std::size_t length = std::strlen(section);
    if (key == nullptr || std::strncmp(key, section, length) != 0 || key[length] != ':') return nullptr;
    return key + length + 1;
}

/// The value of an entry that is there and has one, else null.
const char* ValueOf(const dictionary* d, const char* key) {
    return iniparser_getstring(d, key, nullptr);
}

const char* TextOf(const char* value) {
    return value == nullptr ? "" : value;
}

void DumpWithoutSections(const dictionary& d, FILE* out) {
    for (int i = 0; i < d.size; ++i) {
        if (d.key[i] != nullptr) std::fprintf(out, "%s = %s\n", d.key[i], TextOf(d.val[i]));
    }
}

}  // namespace

namespace krutein::ini {

ErrorCallback Report() {
    return g_report;
}

}  // namespace krutein::ini

void iniparser_set_error_callback(int (*callback)(const char* format, ...)) {
    g_report = callback == nullptr ? WriteToStandardError : callback;
}

int iniparser_getnsec(const dictionary* d) {
    if (d == nullptr) return -1;
    int sections = 0;
    for (int i = 0; i < d->size; ++i) {
        if (IsSection(d->key[i])) ++sections;
    }
    return sections;
}

const char* iniparser_getsecname(const dictionary* d, int n) {
    if (d == nullptr || n < 0) return nullptr;
    int found = 0;
    for (int i = 0; i < d->size; ++i) {
        if (IsSection(d->key[i]) && found++ == n) return d->key[i];
    }
    return nullptr;
}

int iniparser_find_entry(const dictionary* d, const char* entry) {
    return iniparser_getstring(d, entry, InvalidKey()) == InvalidKey() ? 0 : 1;
}

int iniparser_getsecnkeys(const dictionary* d, const char* s) {
    if (d == nullptr || s == nullptr || iniparser_find_entry(d, s) == 0) return 0;
    const LowerName section(s);
    int keys = 0;
    for (int i = 0; i < d->size; ++i) {
        if (NameWithin(section.Text(), d->key[i]) != nullptr) ++keys;
    }
    return keys;
}

const char** iniparser_getseckeys(const dictionary* d, const char* s, const char** keys) {
    if (d == nullptr || s == nullptr || keys == nullptr || iniparser_find_entry(d, s) == 0) return nullptr;
    const LowerName section(s);
    const char** next = keys;
    for (int i = 0; i < d->size; ++i) {
        if (NameWithin(section.Text(), d->key[i]) != nullptr) *next++ = d->key[i];
    }
    return keys;
}

const char* iniparser_getstring(const dictionary* d, const char* key, const char* def) {
    if (d == nullptr || key == nullptr) return def;
    return dictionary_get(d, LowerName(key).Text(), def);
}

long iniparser_getlongint(const dictionary* d, const char* key, long notfound) {
    const char* const value = ValueOf(d, key);
    return value == nullptr ? notfound : std::strtol(value, nullptr, 0);
}

int iniparser_getint(const dictionary* d, const char* key, int notfound) {
    return static_cast<int>(iniparser_getlongint(d, key, notfound));
}

double iniparser_getdouble(const dictionary* d, const char* key, double notfound) {
    const char* const value = ValueOf(d, key);
    return value == nullptr ? notfound : std::strtod(value, nullptr);
}

int iniparser_getboolean(const dictionary* d, const char* key, int notfound) {
    const char* const value = ValueOf(d, key);
    if (value == nullptr || *value == '\0') return notfound;
    if (std::strchr("1TtYy", *value) != nullptr) return 1;
    if (std::strchr("0FfNn", *value) != nullptr) return 0;
    return notfound;
}

int iniparser_set(dictionary* d, const char* entry, const char* val) {
    return entry == nullptr ? -1 : dictionary_set(d, LowerName(entry).Text(), val);
}

void iniparser_unset(dictionary* d, const char* entry) {
    if (entry != nullptr) dictionary_unset(d, LowerName(entry).Text());
}

void iniparser_freedict(dictionary* d) {
    dictionary_del(d);
}

void iniparser_dump(const dictionary* d, FILE* out) {
    if (d == nullptr || out == nullptr) return;
    for (int i = 0; i < d->size; ++i) {
        if (d->key[i] == nullptr) continue;
        if (d->val[i] == nullptr) {
            std::fprintf(out, "[%s]=UNDEF\n", d->key[i]);
        } else {
            std::fprintf(out, "[%s]=[%s]\n", d->key[i], d->val[i]);
        }
    }
}

void iniparser_dump_ini(const dictionary* d, FILE* out) {
    if (d == nullptr || out == nullptr) return;
    if (iniparser_getnsec(d) < 1) {
        DumpWithoutSections(*d, out);
        return;
    }
    for (int i = 0; i < d->size; ++i) {
        if (IsSection(d->key[i])) iniparser_dumpsection_ini(d, d->key[i], out);
    }
    std::fputs("\n", out);
}

void iniparser_dumpsection_ini(const dictionary* d, const char* s, FILE* out) {
    if (d == nullptr || s == nullptr || out == nullptr || iniparser_find_entry(d, s) == 0) return;
    std::fprintf(out, "\n[%s]\n", s);
    for (int i = 0; i < d->size; ++i) {
        const char* const name = NameWithin(s, d->key[i]);
        if (name != nullptr) std::fprintf(out, "%-30s = %s\n", name, TextOf(d->val[i]));
    }
    std::fputs("\n", out);
}
