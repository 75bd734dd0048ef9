#include "Tools/devicesim/Frames.h"

namespace devicesim {
namespace {

constexpr std::size_t kNumberBytes = 4;

void PutLittle(std::string& bytes, std::uint32_t number) {
    for (unsigned shift = 0; shift < 32; shift += 8)
        bytes.push_back(static_cast<char>(number >> shift & 0xFFU));
}

std::uint32_t ByteAt(const std::string& bytes, std::size_t index) {
    return static_cast<unsigned char>(bytes[index]);
}

std::uint32_t LittleAt(const std::string& bytes, std::size_t begin) {
    std::uint32_t number = 0;
    for (std::size_t i = kNumberBytes; i > 0; --i)
        number = number << 8 | ByteAt(bytes, begin + i - 1);
    return number;
}

std::uint32_t BigAt(const std::string& bytes, std::size_t begin) {
    std::uint32_t number = 0;
    for (std::size_t i = 0; i < kNumberBytes; ++i)
        number = number << 8 | ByteAt(bytes, begin + i);
    return number;
}

}  // namespace

std::string DaemonHeader(std::uint32_t payloadBytes, std::uint32_t tag) {
    std::string bytes;
    PutLittle(bytes, kDaemonHeaderBytes + payloadBytes);
    PutLittle(bytes, kDaemonVersion);
    PutLittle(bytes, kDaemonPlistMessage);
    PutLittle(bytes, tag);
    return bytes;
}

std::string ServiceHeader(std::uint32_t payloadBytes) {
    std::string bytes;
    for (unsigned shift = 32; shift > 0; shift -= 8)
        bytes.push_back(static_cast<char>(payloadBytes >> (shift - 8) & 0xFFU));
    return bytes;
}

bool ReadDaemonFrame(const Connection& connection, DaemonFrame& frame) {
    std::string header;
    if (!connection.Read(header, kDaemonHeaderBytes)) return false;
    const std::uint32_t length = LittleAt(header, 0);
    if (length < kDaemonHeaderBytes || length - kDaemonHeaderBytes > kMaxPayloadBytes) return false;
    frame.version = LittleAt(header, 4);
    frame.message = LittleAt(header, 8);
    frame.tag = LittleAt(header, 12);
    return connection.Read(frame.payload, length - kDaemonHeaderBytes);
}

bool ReadServiceFrame(const Connection& connection, std::string& payload) {
    std::string header;
    if (!connection.Read(header, kServiceHeaderBytes)) return false;
    const std::uint32_t length = BigAt(header, 0);
    return length <= kMaxPayloadBytes && connection.Read(payload, length);
}

}  // namespace devicesim
