#pragma once

#include <cstddef>
#include <cstdint>

/// Reading and writing of big-endian data. Internal.
namespace krutein::mbdb {

/// The big-endian number of the type's width at `bytes`.
template <typename Unsigned>
Unsigned FromBigEndian(const unsigned char* bytes) {
    Unsigned value = 0;
    for (std::size_t i = 0; i < sizeof value; ++i) {
        value = static_cast<Unsigned>(static_cast<std::uint64_t>(value) << 8U | bytes[i]);
    }
    return value;
}

/// Reads from memory that may end anywhere: each take says whether there was enough, and only then advances.
class Cursor {
 public:
    Cursor(const unsigned char* data, std::size_t size) : m_next(data), m_left(size) {}

    std::size_t Left() const { return m_left; }

    /// The next bytes; null when there are fewer.
    const unsigned char* Take(std::size_t bytes) {
        if (bytes > m_left) return nullptr;
        const unsigned char* const taken = m_next;
        m_next += bytes;
        m_left -= bytes;
        return taken;
    }

    bool TakeU16(std::uint16_t& value) {
        const unsigned char* const bytes = Take(sizeof value);
        if (bytes == nullptr) return false;
        value = FromBigEndian<std::uint16_t>(bytes);
        return true;
    }

 private:
    const unsigned char* m_next;
    std::size_t m_left;
};

/// Writes the number at `to` and returns what is behind it.
template <typename Unsigned>
unsigned char* ToBigEndian(unsigned char* to, Unsigned value) {
    for (std::size_t i = sizeof value; i > 0; --i) {
        *to++ = static_cast<unsigned char>(static_cast<std::uint64_t>(value) >> (8U * (i - 1)));
    }
    return to;
}

}  // namespace krutein::mbdb
