#pragma once

/// \file
/// INI files as an object.

#include <cstdio>
#include <string>

#include "Common/Export.h"
#include "Common/ini/dictionary.h"

/// One line of a section.
struct ST_INI_KEY_VALUE {
    std::string key;    ///< without the section
    std::string value;  ///< as it stands in the file, without quotes
};

/// Writes the dictionary as an INI file: sections sorted by name, keys in the order of their slots. Sections
/// are taken from the keys, so those without an entry of their own are written, and those without keys are
/// not. Values are written as they are, without quotes. Nothing is written for a null argument.
KRUTEIN_API void iniparser_patch_dump_ini(const dictionary* d, FILE* out);

/// An INI file that is read, changed and written back. Names are blind to case and written in lower case.
/// Failures show in the results only. An object is used by one thread at a time.
class KRUTEIN_API CIniObj {
 public:
    CIniObj() = default;
    ~CIniObj();
    CIniObj(const CIniObj&) = delete;
    CIniObj& operator=(const CIniObj&) = delete;

    /// Reads a file, creating an empty one where there is none. What was loaded before is dropped.
    /// \return false when the file cannot be read or is no INI file: then nothing is loaded, and the path
    ///         that save uses stays as it was.
    bool load(std::string path);

    /// Drops what is loaded.
    void unload();

    /// Writes the file back, in the form of iniparser_patch_dump_ini. Does nothing when nothing is loaded or
    /// the file cannot be opened.
    void save();

    /// "section:key", or the section alone for a null key.
    /// \return false, with `out` untouched, for a null or empty section.
    bool formatIniKey(const char* section, const char* key, std::string& out);

    /// The value; `def` when nothing is loaded, the section is empty, or there is no such value.
    std::string getIni_string(std::string section, std::string key, std::string def);
    /// The value as a number: 0x for hexadecimal, a leading 0 for octal.
    int getIni_int(std::string section, std::string key, int def);

    /// \{
    /// Stores a value. \return false when nothing is loaded or the section is empty.
    bool setIni_string(std::string section, std::string key, std::string value);
    bool setIni_int(std::string section, std::string key, int value);
    /// \}

 private:
    bool keyOf(const std::string& section, const std::string& key, std::string& out);

    std::string m_path;
    dictionary* m_dictionary = nullptr;
};
