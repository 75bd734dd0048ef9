#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "Module/BackupLib/mbdb/mbdb.h"

/// The bytes of Manifest.mbdb files, put together by hand: what the library's reader and writer are held
/// against.

/// A string with its length; an absent one is nothing, written as 0xFFFF.
using MbdbText = std::optional<std::string>;

struct MbdbRecordBytes {
    MbdbText domain = "HomeDomain";
    MbdbText path = "Library/some.file";
    MbdbText target;
    MbdbText datahash;
    MbdbText unknown1;
    std::uint16_t mode = 0x81A4;
    std::uint32_t unknown2 = 0;
    std::uint32_t inode = 1;
    std::uint32_t uid = 501;
    std::uint32_t gid = 501;
    std::uint32_t time1 = 1;
    std::uint32_t time2 = 2;
    std::uint32_t time3 = 3;
    std::uint64_t length = 4;
    std::uint8_t flag = 4;
    std::vector<std::pair<std::string, std::string>> properties;

    std::string Bytes() const;

    /// Five absent strings, zeros, no properties: the smallest there is.
    static MbdbRecordBytes Smallest();
};

inline const std::string kMbdbHeader("mbdb\x05\x00", 6);

/// Header and records.
std::string MbdbBytes(const std::vector<MbdbRecordBytes>& records);

using Mbdb = std::unique_ptr<mbdb_t, void (*)(mbdb_t*)>;

/// Parses bytes that lie in memory of exactly their size, so that reading past the end is seen.
Mbdb ParseMbdb(const std::string& bytes);
