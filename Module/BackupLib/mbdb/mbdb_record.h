#pragma once

#include <cstdint>

#include "Common/Export.h"

/// \file
/// One record of a Manifest.mbdb catalogue: a file, folder or link of a backup.
///
/// Plain structures and functions. Failures are null results, with a line on standard output. A record is
/// used by one thread at a time; records are allocated with malloc and freed by mbdb_record_free or with
/// their catalogue.

/// A key and value of a record. The texts are owned and NUL-terminated; they may hold any bytes.
struct mbdb_property_t {
    std::uint16_t name_size;   ///< bytes
    char* name;                ///< owned
    std::uint16_t value_size;  ///< bytes
    char* value;               ///< owned
};

/// The fields in their order in the file. A size of 0 or 0xFFFF means an absent value, whose pointer is null;
/// it is written back as it was read.
struct mbdb_record_t {            // NOLINT(clang-analyzer-optin.performance.Padding): published
    std::uint16_t domain_size;    ///< bytes
    char* domain;                 ///< "HomeDomain"; owned, NUL-terminated
    std::uint16_t path_size;      ///< bytes
    char* path;                   ///< in the domain; owned, NUL-terminated
    std::uint16_t target_size;    ///< bytes
    char* target;                 ///< of a symbolic link; owned, NUL-terminated
    std::uint16_t datahash_size;  ///< bytes
    char* datahash;               ///< of the content; owned, exactly datahash_size bytes
    std::uint16_t unknown1_size;  ///< bytes
    char* unknown1;               ///< owned; NUL-terminated when it was read from a file
    std::uint16_t mode;           ///< Unix type and permission bits
    std::uint32_t unknown2;       ///< kept as it is
    std::uint32_t inode;          ///< of the file on the device
    std::uint32_t uid;            ///< the owner's number on the device
    std::uint32_t gid;            ///< the group's number on the device
    std::uint32_t time1;          ///< seconds since 1970
    std::uint32_t time2;          ///< seconds since 1970
    std::uint32_t time3;          ///< seconds since 1970
    std::uint64_t length;         ///< of the file, in bytes
    std::uint8_t flag;            ///< the protection class; kept as it is
    std::uint8_t property_count;  ///< of `properties`
    mbdb_property_t**
        properties;             ///< owned array of property_count owned properties; null when there are none
    std::uint32_t record_size;  ///< bytes of the record in the file; used while parsing only
};

/// A record of zeros. \return null, with "Allocation Error!" printed, without memory.
KRUTEIN_API mbdb_record_t* mbdb_record_create();

/// Decodes the record that begins at `data`, which must hold a whole one: the end of the memory is not known
/// here (mbdb_parse knows it). \return a new record, null without memory.
KRUTEIN_API mbdb_record_t* mbdb_record_parse(unsigned char* data);

/// Frees the record and all that it owns; null is ignored.
KRUTEIN_API void mbdb_record_free(mbdb_record_t* record);

/// Makes an empty record: zeros, the sizes of target, datahash and unknown1 0xFFFF, record_size 50. What the
/// record owned is forgotten, not freed. Null is ignored.
KRUTEIN_API void mbdb_record_init(mbdb_record_t* record);

/// Prints the record to standard output, a line for each field.
KRUTEIN_API void mbdb_record_debug(mbdb_record_t* record);

/// \{
/// Set the domain or the path. A null record is ignored. The text is copied, the old one freed, and
/// record_size kept in step; an empty or null text stores the size 0. What is longer than 65534 bytes is cut
/// there, since the file has no room for more; without memory the value becomes absent.
KRUTEIN_API void mbdb_record_set_domain(mbdb_record_t* record, const char* domain);
KRUTEIN_API void mbdb_record_set_path(mbdb_record_t* record, const char* path);
/// \}

/// \{
/// Set the link's target, the hash or the unknown value, as mbdb_record_set_domain does; but an empty or null
/// value stores the size 0xFFFF.
KRUTEIN_API void mbdb_record_set_target(mbdb_record_t* record, const char* target);
KRUTEIN_API void mbdb_record_set_datahash(mbdb_record_t* record, const char* hash, unsigned short size);
KRUTEIN_API void mbdb_record_set_unknown1(mbdb_record_t* record, const char* value, unsigned short size);
/// \}

/// \{
/// Set a number. A null record is ignored.
KRUTEIN_API void mbdb_record_set_mode(mbdb_record_t* record, unsigned short mode);
KRUTEIN_API void mbdb_record_set_unknown2(mbdb_record_t* record, unsigned int value);
KRUTEIN_API void mbdb_record_set_inode(mbdb_record_t* record, unsigned int inode);
KRUTEIN_API void mbdb_record_set_uid(mbdb_record_t* record, unsigned int uid);
KRUTEIN_API void mbdb_record_set_gid(mbdb_record_t* record, unsigned int gid);
KRUTEIN_API void mbdb_record_set_time1(mbdb_record_t* record, unsigned int time);
KRUTEIN_API void mbdb_record_set_time2(mbdb_record_t* record, unsigned int time);
KRUTEIN_API void mbdb_record_set_time3(mbdb_record_t* record, unsigned int time);
KRUTEIN_API void mbdb_record_set_length(mbdb_record_t* record, unsigned long long length);
KRUTEIN_API void mbdb_record_set_flag(mbdb_record_t* record, unsigned char flag);
/// \}
