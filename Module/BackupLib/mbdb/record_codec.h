#pragma once

#include <cstddef>

#include "Module/BackupLib/mbdb/mbdb_record.h"

/// What the catalogue needs of its records. Internal.
namespace krutein::mbdb {

/// mbdb_record_parse for memory whose end is known.
/// \return null also when the record runs past the end.
mbdb_record_t* DecodeRecord(const unsigned char* data, std::size_t size);

/// Bytes that EncodeRecord writes.
std::size_t EncodedBytes(const mbdb_record_t& record);

/// Writes the record as it stands in the file. \return what is behind it.
unsigned char* EncodeRecord(const mbdb_record_t& record, unsigned char* to);

/// A deep copy as MBDB_INSERT_COPY appends it; null without memory.
mbdb_record_t* CopyRecord(const mbdb_record_t& record);

}  // namespace krutein::mbdb
