#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

/// The binary form of property lists: the magic, the objects, the table of their offsets, and a trailer of 32
/// bytes. All numbers have their most significant byte first.
namespace krutein::bplist {

constexpr std::string_view kMagic = "bplist00";

// The trailer: 6 bytes unused, two widths, and three numbers of 8 bytes.
constexpr std::size_t kTrailerBytes = 32;
constexpr std::size_t kOffsetWidthAt = 6;
constexpr std::size_t kReferenceWidthAt = 7;
constexpr std::size_t kCountAt = 8;
constexpr std::size_t kTopAt = 16;
constexpr std::size_t kOffsetsAt = 24;

// The types in the upper half of an object's first byte.
constexpr unsigned kNumber = 0x1;
constexpr unsigned kAsciiText = 0x5;
constexpr unsigned kUtf16Text = 0x6;
constexpr unsigned kUid = 0x8;
constexpr unsigned kArray = 0xA;
constexpr unsigned kDictionary = 0xD;

/// In the lower half instead of a count: the count follows as a number.
constexpr unsigned kCountFollows = 0xF;

}  // namespace krutein::bplist
