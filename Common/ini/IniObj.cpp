#include "Common/ini/IniObj.h"

#include <cstring>
#include <map>
#include <new>
#include <vector>

#include "Common/ini/iniparser.h"
#include "Common/std/std_file.h"
#include "Common/std/std_path.h"
#include "Common/std/std_string.h"

namespace {

using Lines = std::vector<ST_INI_KEY_VALUE>;
using Sections = std::map<std::string, Lines>;

/// The lines of a section, which is most often that of the key before.
Lines& LinesOf(const std::string& name, Sections& sections, Sections::iterator& last) {
    if (last == sections.end() || last->first != name) last = sections.try_emplace(name).first;
    return last->second;
}

Sections Group(const dictionary& d) {
    Sections sections;
    auto last = sections.end();
    for (int i = 0; i < d.size; ++i) {
        const char* const colon = d.key[i] == nullptr ? nullptr : std::strchr(d.key[i], ':');
        if (colon == nullptr || std::strchr(colon + 1, ':') != nullptr) continue;
        const std::string section(d.key[i], static_cast<std::size_t>(colon - d.key[i]));
        LinesOf(section, sections, last).push_back({colon + 1, d.val[i] == nullptr ? "" : d.val[i]});
    }
    return sections;
}

std::string TextOf(const Sections& sections) {
    std::string text;
    for (const auto& [section, lines] : sections) {
        text.append("[").append(section).append("]\n");
        for (const ST_INI_KEY_VALUE& line : lines)
            text.append(line.key).append(" = ").append(line.value).append("\n");
        text.append("\n");
    }
    return text;
}

}  // namespace

void iniparser_patch_dump_ini(const dictionary* d, FILE* out) {
    if (d == nullptr || out == nullptr) return;
    try {
        const std::string text = TextOf(Group(*d));
        std::fwrite(text.data(), 1, text.size(), out);
    } catch (const std::bad_alloc&) {
        // Nothing has been written: the text comes first.
    }
}

CIniObj::~CIniObj() {
    unload();
}

bool CIniObj::load(std::string path) {
    STD_PATH_FormatA(path);
    if (!STD_PATH_ExistA(path)) {
        if (FILE* const created = STD_FILE_OpenA(path, "w")) std::fclose(created);
    }
    unload();
    m_dictionary = iniparser_load(path.c_str());
    if (m_dictionary == nullptr) return false;
    m_path = path;
    return true;
}

void CIniObj::unload() {
    iniparser_freedict(m_dictionary);
    m_dictionary = nullptr;
}

void CIniObj::save() {
    if (m_dictionary == nullptr) return;
    FILE* const file = STD_FILE_OpenA(m_path, "w");
    if (file == nullptr) return;
    iniparser_patch_dump_ini(m_dictionary, file);
    std::fclose(file);
}

bool CIniObj::formatIniKey(const char* section, const char* key, std::string& out) {
    if (section == nullptr || *section == '\0') return false;
    out = section;
    if (key != nullptr) out.append(":").append(key);
    return true;
}

std::string CIniObj::getIni_string(std::string section, std::string key, std::string def) {
    std::string entry;
    if (!keyOf(section, key, entry)) return def;
    const char* const value = iniparser_getstring(m_dictionary, entry.c_str(), def.c_str());
    return value == nullptr ? def : value;
}

int CIniObj::getIni_int(std::string section, std::string key, int def) {
    std::string entry;
    return keyOf(section, key, entry) ? iniparser_getint(m_dictionary, entry.c_str(), def) : def;
}

bool CIniObj::setIni_string(std::string section, std::string key, std::string value) {
    std::string entry;
    return keyOf(section, key, entry) && iniparser_set(m_dictionary, entry.c_str(), value.c_str()) == 0;
}

bool CIniObj::setIni_int(std::string section, std::string key, int value) {
    return setIni_string(std::move(section), std::move(key), STD_FormatA("%d", value));
}

/// The entry's name. \return false when nothing is loaded or the section is empty.
bool CIniObj::keyOf(const std::string& section, const std::string& key, std::string& out) {
    return m_dictionary != nullptr && formatIniKey(section.c_str(), key.c_str(), out);
}
