#pragma once

#include <cstdio>

#include "Common/Export.h"
#include "Common/ini/dictionary.h"

/// \file
/// Reading INI files into a dictionary, and what is asked of it.
///
/// A section is an entry whose key is the section's name and which has no value; a value has the key
/// "section:key". Names are stored in lower case, and every name that is given here is lowered first (ASCII,
/// cut at 1024 bytes), so lookups are blind to case. Docs/formats.md ("INI files") describes the syntax.
///
/// A dictionary is used by one thread at a time. No function throws.

/// Sets the function that receives all messages, a printf-like one; null for the default, which writes to
/// standard error. One for the whole process: set it before anything is read.
KRUTEIN_API void iniparser_set_error_callback(int (*callback)(const char* format, ...));

/// Number of sections: of keys without a colon; -1 for null.
KRUTEIN_API int iniparser_getnsec(const dictionary* d);

/// Name of the n-th section from 0, in the order of the slots; it stays the dictionary's. Null when there is
/// none.
KRUTEIN_API const char* iniparser_getsecname(const dictionary* d, int n);

/// 1 when there is such an entry ("section" or "section:key"), else 0.
KRUTEIN_API int iniparser_find_entry(const dictionary* d, const char* entry);

/// Number of keys in a section; 0 when there is no such section.
KRUTEIN_API int iniparser_getsecnkeys(const dictionary* d, const char* s);

/// Fills the caller's array, of iniparser_getsecnkeys entries, with the full keys of a section, which stay
/// the dictionary's. \return the array; null when there is no such section or an argument is null.
KRUTEIN_API const char** iniparser_getseckeys(const dictionary* d, const char* s, const char** keys);

/// The value of "section:key", which stays the dictionary's; `def` when there is none. A key without a value
/// gives null.
KRUTEIN_API const char* iniparser_getstring(const dictionary* d, const char* key, const char* def);

/// The value as a number (0x for hexadecimal, a leading 0 for octal); `notfound` when there is none.
KRUTEIN_API long iniparser_getlongint(const dictionary* d, const char* key, long notfound);
/// \{
/// The same cut to an int.
KRUTEIN_API int iniparser_getint(const dictionary* d, const char* key, int notfound);
KRUTEIN_API double iniparser_getdouble(const dictionary* d, const char* key, double notfound);
/// \}

/// By the value's first character: 1 for 1, t and y, 0 for 0, f and n, in any case; `notfound` for anything
/// else.
KRUTEIN_API int iniparser_getboolean(const dictionary* d, const char* key, int notfound);

/// Stores a value under a lowered entry name, without looking whether its section has an entry. \return as
/// dictionary_set.
KRUTEIN_API int iniparser_set(dictionary* d, const char* entry, const char* val);

/// Removes an entry.
KRUTEIN_API void iniparser_unset(dictionary* d, const char* entry);

/// What is done to each line before it is read: removes white space at both ends, in place.
/// \param line  not null.
/// \return -2 when the line is empty then, -3 when it is a comment that begins with ';', else 0.
KRUTEIN_API int iniparser_patch_2017_10_13(char* line);

/// Reads a file. \return a new dictionary, to be freed with iniparser_freedict; null, with a message, when
/// the file cannot be opened or any line is no INI syntax.
KRUTEIN_API dictionary* iniparser_load(const char* path);

/// Frees a dictionary with its keys and values; null is ignored.
KRUTEIN_API void iniparser_freedict(dictionary* d);

/// Prints all entries, "[key]=[value]" or "[key]=UNDEF".
KRUTEIN_API void iniparser_dump(const dictionary* d, FILE* out);

/// Prints the dictionary as an INI file; keys of sections that have no entry are left out.
KRUTEIN_API void iniparser_dump_ini(const dictionary* d, FILE* out);

/// Prints one section: its heading as `s` is given, and the keys that begin with exactly that text.
KRUTEIN_API void iniparser_dumpsection_ini(const dictionary* d, const char* s, FILE* out);
