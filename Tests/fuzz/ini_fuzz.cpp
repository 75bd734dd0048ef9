// INI files: a file loads as a plain reading of its syntax by scan patterns says (IniReference). What is
// loaded, or set, and written as a file loads as the same values again, within the domain that the syntax can
// express (Survives). Beyond it the writers must not crash, and neither must the reader on what they wrote.

#include <cctype>
#include <cstdio>
#include <cstring>
#include <map>
#include <memory>
#include <string>

#include "Common/ini/IniObj.h"
#include "Common/ini/iniparser.h"
#include "Tests/fuzz/Fuzz.h"
#include "Tests/fuzz/IniReference.h"

namespace {

struct FreeDictionary {
    void operator()(dictionary* d) const { iniparser_freedict(d); }
};
using Dictionary = std::unique_ptr<dictionary, FreeDictionary>;
using Values = std::map<std::string, std::string>;

/// A line that has so many bytes with its line end is cut in two.
constexpr std::size_t kLineBytes = 1024;
constexpr std::size_t kPaddedNameBytes = 30;

int Quiet(const char* /*format*/, ...) {
    return 0;
}

bool IsStripped(const std::string& text) {
    return text.empty() || (std::isspace(static_cast<unsigned char>(text.front())) == 0 &&
                            std::isspace(static_cast<unsigned char>(text.back())) == 0);
}

/// The reader would take a part of the value for quoted, or the whole for two quotes with nothing between.
bool ReadsAsQuoted(const std::string& value) {
    if (value.size() < 2 || (value[0] != '"' && value[0] != '\'')) return false;
    return value[1] != value[0] || value.size() == 2;
}

bool SectionSurvives(const std::string& section) {
    return IsStripped(section) && section.find_first_of("]\n:") == std::string::npos &&
           section.size() + 3 < kLineBytes;
}

bool Survives(const std::string& name, const std::string& value) {
    if (name.empty() || !IsStripped(name) || name.find_first_of("=\n") != std::string::npos) return false;
    if (name[0] == '#' || name[0] == ';' || (name[0] == '[' && !value.empty() && value.back() == ']'))
        return false;
    if (!IsStripped(value) || value.find_first_of(";#\n") != std::string::npos || ReadsAsQuoted(value)) {
        return false;
    }
    return std::max(name.size(), kPaddedNameBytes) + 3 + value.size() + 1 < kLineBytes;
}

/// Removes what the file cannot express: entries outside of the domain, and keys that a writer leaves out.
/// \param grouped  for the grouping writer, which drops keys with more than one colon; the other one drops
///                 keys of sections without an entry.
void KeepDomain(dictionary& d, bool grouped) {
    for (int i = 0; i < d.size; ++i) {
        if (d.key[i] == nullptr) continue;
        const std::string entry = d.key[i];
        const std::size_t colon = entry.find(':');
        const std::string section = entry.substr(0, colon);
        bool keep = SectionSurvives(section);
        if (keep && colon != std::string::npos) {
            const std::string name = entry.substr(colon + 1);
            keep = Survives(name, d.val[i] == nullptr ? "" : d.val[i]);
            keep = keep && (grouped ? name.find(':') == std::string::npos
                                    : iniparser_find_entry(&d, section.c_str()) == 1);
        }
        if (!keep) dictionary_unset(&d, entry.c_str());
    }
}

/// The keys with a section, without their values' absence: both writers write an absent value as an empty
/// one.
Values ValuesOf(const dictionary& d) {
    Values values;
    for (int i = 0; i < d.size; ++i) {
        if (d.key[i] != nullptr && std::strchr(d.key[i], ':') != nullptr)
            values[d.key[i]] = d.val[i] == nullptr ? "" : d.val[i];
    }
    return values;
}

void WriteWith(void (*writer)(const dictionary*, FILE*), const dictionary& d, const ScratchFile& file) {
    FILE* const out = std::fopen(file.Path().c_str(), "w");
    Require(out != nullptr, "the scratch file can be opened");
    writer(&d, out);
    std::fclose(out);
}

Dictionary Load(const ScratchFile& file) {
    return Dictionary(iniparser_load(file.Path().c_str()));
}

void CheckLookups(const dictionary& d) {
    for (const auto& [key, value] : ValuesOf(d)) {
        const char* const found = iniparser_getstring(&d, key.c_str(), "?");
        Require(key.size() > kLineBytes || key != AsciiLower(key) || found == nullptr || value == found,
                "a stored value is found by its key");
        iniparser_getint(&d, key.c_str(), 0);
        iniparser_getdouble(&d, key.c_str(), 0);
        iniparser_getboolean(&d, key.c_str(), 0);
    }
    for (int i = 0; i < iniparser_getnsec(&d); ++i) {
        const char* const section = iniparser_getsecname(&d, i);
        Require(section != nullptr, "each counted section has a name");
        const int keys = iniparser_getsecnkeys(&d, section);
        const auto names = std::make_unique<const char*[]>(static_cast<std::size_t>(keys) + 1);
        iniparser_getseckeys(&d, section, names.get());
    }
}

void CheckWriter(dictionary& d, void (*writer)(const dictionary*, FILE*), bool grouped,
                 const ScratchFile& file) {
    WriteWith(writer, d, file);
    Load(file);  // whatever it was: no crash
    KeepDomain(d, grouped);
    if (!grouped && iniparser_getnsec(&d) < 1)
        return;  // written as "section:key = value", which is no section
    WriteWith(writer, d, file);
    const Dictionary again = Load(file);
    Require(again != nullptr, "what was written can be read");
    Require(ValuesOf(d) == ValuesOf(*again), "values survive writing and reading");
}

void CheckLoaded(const dictionary* d, const std::string& content) {
    IniReference::Entries expected;
    const bool isSyntax = IniReference::Read(content, expected);
    Require((d != nullptr) == isSyntax, "a file loads when all of its lines are INI syntax");
    if (d == nullptr) return;
    Require(static_cast<std::size_t>(d->n) == expected.size(), "a file has the entries of its lines");
    for (const auto& [key, value] : expected) {
        const char* const found = dictionary_get(d, key.c_str(), "?");
        Require(value ? found != nullptr && *value == found : found == nullptr,
                "an entry is what its line says");
    }
}

/// The first byte chooses: the rest as a file, or as lines of names and values that are set.
Dictionary Make(FuzzInput input, const ScratchFile& file) {
    if ((input.Byte() & 1) == 0) {
        const std::string content = input.Rest();
        file.Write(content);
        Dictionary d = Load(file);
        CheckLoaded(d.get(), content);
        return d;
    }
    Dictionary d(dictionary_new(0));
    while (!input.IsEmpty()) {
        const std::string entry = input.Line();
        const std::string value = input.Line();
        iniparser_set(d.get(), entry.c_str(), entry.find(':') == std::string::npos ? nullptr : value.c_str());
    }
    return d;
}

/// The file object writes what the grouping writer writes, and reads it back.
void CheckObject(const std::string& text, const ScratchFile& file) {
    file.Write(text);
    CIniObj object;
    if (!object.load(file.Path())) return;
    object.save();
    const std::string saved = file.Read();
    file.Write(text);
    const Dictionary d = Load(file);
    WriteWith(iniparser_patch_dump_ini, *d, file);
    Require(file.Read() == saved, "the file object saves with the grouping writer");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const ScratchFile file("file.ini");
    iniparser_set_error_callback(Quiet);
    for (const bool grouped : {false, true}) {
        const Dictionary d = Make(FuzzInput(data, size), file);
        if (d == nullptr) return 0;
        CheckLookups(*d);
        CheckWriter(*d, grouped ? iniparser_patch_dump_ini : iniparser_dump_ini, grouped, file);
    }
    if (size > 0 && (data[0] & 1) == 0) CheckObject(FuzzInput(data + 1, size - 1).Rest(), file);
    return 0;
}
