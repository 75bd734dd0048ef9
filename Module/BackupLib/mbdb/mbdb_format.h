#pragma once

#include <cstddef>
#include <cstdint>

/// The numbers of the Manifest.mbdb file format, which Docs/formats.md ("Manifest.mbdb") describes and
/// Tests/Module/BackupLib/mbdb holds. All integers in the file are big-endian. Internal.
namespace krutein::mbdb {

constexpr unsigned char kHeader[] = {'m', 'b', 'd', 'b', 5, 0};
constexpr std::size_t kHeaderBytes = sizeof kHeader;

/// Both lengths mean an absent value and are followed by no bytes; the second is the usual one.
constexpr std::uint16_t kEmpty = 0;
constexpr std::uint16_t kAbsent = 0xFFFF;

/// A longer text cannot be written: its length would be cut or read as absent.
constexpr std::size_t kMaxTextBytes = 0xFFFE;

constexpr std::size_t kLengthBytes = 2;
constexpr std::size_t kStringsOfARecord = 5;
/// Mode to property count: what follows the five strings of each record.
constexpr std::size_t kFixedBytes = 40;
constexpr std::size_t kSmallestRecordBytes = kStringsOfARecord * kLengthBytes + kFixedBytes;

constexpr bool IsAbsent(std::uint16_t length) {
    return length == kEmpty || length == kAbsent;
}

}  // namespace krutein::mbdb
