#pragma once

#include <vector>

#include "Common/Export.h"
#include "Module/BackupLib/mbdb/mbdb_record.h"

/// \file
/// The Manifest.mbdb catalogue of backups of systems up to version 9: one record for each file, folder and
/// link.
///
/// Plain functions. Failures are null or false, mostly with a line on standard output. A catalogue is used by
/// one thread at a time. No function throws.

/// A catalogue in memory.
struct mbdb_t {
    unsigned int size;                    ///< bytes in data
    unsigned char* data;                  ///< owned copy of the file as it was read
    unsigned char* header;                ///< owned copy of the first six bytes
    std::vector<mbdb_record_t*> records;  ///< in the order of the file; owned
};

/// What mbdb_insert_record does with the record. Never change.
enum en_mbdb_insert_record_type : int {
    MBDB_INSERT_COPY = 0,   ///< append a deep copy
    MBDB_INSERT_ATTACH = 1  ///< append the record itself, which the catalogue owns from then on
};

/// A catalogue without header and records, to be freed with mbdb_free. It cannot be saved until it has a
/// header.
/// \return null without memory.
KRUTEIN_API mbdb_t* mbdb_create();

/// Parses an image, which stays the caller's. A record that does not decode, or that runs past the image's
/// end, ends the parsing; the records before it are kept.
/// \return the catalogue, to be freed with mbdb_free; null when the image is no catalogue or memory runs out.
KRUTEIN_API mbdb_t* mbdb_parse(unsigned char* data, unsigned int size);

/// Reads and parses a file.
/// \param path  UTF-8, as it is.
/// \return as mbdb_parse; null without a message when the file cannot be opened or is empty.
KRUTEIN_API mbdb_t* mbdb_open(const char* path);

/// Not supported: always null.
KRUTEIN_API mbdb_t* mbdb_openw(const wchar_t* path);

/// Not supported: always null. Use mbdb_t::records.
KRUTEIN_API mbdb_record_t* mbdb_get_record(mbdb_t* mbdb, unsigned int index);

/// Frees the catalogue with all its records; null is ignored.
KRUTEIN_API void mbdb_free(mbdb_t* mbdb);

/// A duplicate to be released with free; null for null and without memory.
KRUTEIN_API char* mbdb_strdup(const char* text);

/// Writes the catalogue, replacing the file. A catalogue that was opened is written back byte for byte.
/// \return false when there is no catalogue, it has no valid header, or the file cannot be opened. Write
///         errors are not noticed.
KRUTEIN_API bool mbdb_save(mbdb_t* mbdb, const char* path);

/// Appends a record.
///
/// A copy takes texts up to their NUL, the hash and unknown1 too: a hash that holds a zero byte is cut there.
///
/// \return the copy; null for MBDB_INSERT_ATTACH, which is no failure, and when nothing was appended: for
///         null arguments, another type, or a copy without memory.
KRUTEIN_API mbdb_record_t* mbdb_insert_record(mbdb_t* mbdb, mbdb_record_t* record,
                                              en_mbdb_insert_record_type type);
