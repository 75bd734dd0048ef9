#pragma once

/// \file
/// The dictionary behind the INI functions.

#include <cstddef>
#include <cstdio>

#include "Common/Export.h"

/// A dictionary of texts in numbered slots: what INI files are read into.
///
/// Plain structure and functions; a dictionary is used by one thread at a time. Keys are compared as they
/// are; iniparser.h lowers names before it looks them up. No function throws.
struct dictionary {
    int n;           ///< entries in use
    int size;        ///< slots, 128 at least
    char** val;      ///< owned values; a slot in use may have none
    char** key;      ///< owned keys; null in a free slot
    unsigned* hash;  ///< hashes of the keys
};

/// The one-at-a-time hash of the key's bytes, taken as signed chars; 0 for null and for the empty key.
KRUTEIN_API unsigned dictionary_hash(const char* key);

/// A dictionary with max(size, 128) slots, to be freed with dictionary_del; null without memory.
KRUTEIN_API dictionary* dictionary_new(std::size_t size);

/// Frees the dictionary with its keys and values; null is ignored.
KRUTEIN_API void dictionary_del(dictionary* d);

/// The value of a key, which stays the dictionary's and may be null; `def` when there is no such key or an
/// argument is null.
KRUTEIN_API const char* dictionary_get(const dictionary* d, const char* key, const char* def);

/// Stores copies of key and value. A new key takes the first free slot from slot n on, an existing one keeps
/// its slot. The dictionary doubles when it is full.
/// \param val  may be null: a key without a value.
/// \return 0; -1, with nothing changed, for a null dictionary or key and without memory.
KRUTEIN_API int dictionary_set(dictionary* d, const char* key, const char* val);

/// Removes a key; one that is not there and null arguments are ignored.
KRUTEIN_API void dictionary_unset(dictionary* d, const char* key);

/// Prints a line for each entry, "UNDEF" for a missing value; "empty dictionary" when there is none.
KRUTEIN_API void dictionary_dump(const dictionary* d, FILE* out);
