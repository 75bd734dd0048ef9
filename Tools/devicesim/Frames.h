#pragma once

#include <cstdint>
#include <string>

#include "Tools/devicesim/Connection.h"

/// The two kinds of frames, around property lists in both directions:
///  - the daemon's: 16 bytes of little-endian 32-bit numbers (length with these 16 bytes, version, message,
///    tag), then the list;
///  - a service's, lockdown's for one: a big-endian 32-bit length without itself, then the list.
namespace devicesim {

// Wire numbers: never change.
constexpr std::uint32_t kDaemonHeaderBytes = 16;
constexpr std::uint32_t kDaemonVersion = 1;
constexpr std::uint32_t kDaemonPlistMessage = 8;
constexpr std::uint32_t kServiceHeaderBytes = 4;

/// The longest property list that is read: far above any real one.
constexpr std::uint32_t kMaxPayloadBytes = 1U << 20;

struct DaemonFrame {
    std::uint32_t version = kDaemonVersion;
    std::uint32_t message = kDaemonPlistMessage;
    std::uint32_t tag = 0;
    std::string payload;
};

/// The header of a frame with so many bytes behind it.
std::string DaemonHeader(std::uint32_t payloadBytes, std::uint32_t tag);
std::string ServiceHeader(std::uint32_t payloadBytes);

/// Read one frame. \return false when the connection ends or the length cannot be right.
bool ReadDaemonFrame(const Connection& connection, DaemonFrame& frame);
bool ReadServiceFrame(const Connection& connection, std::string& payload);

}  // namespace devicesim
