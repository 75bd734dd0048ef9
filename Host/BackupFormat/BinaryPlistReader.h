#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace krutein {

/// Reads single values out of a binary property list that somebody may have tampered with. Unlike libplist it
/// builds no tree, since a few hundred bytes can describe one that no memory holds. What is not there, is of
/// another type or lies outside the bytes is simply not found.
class BinaryPlistReader {
 public:
    using Object = std::uint64_t;  ///< an index into the list of objects

    /// \param bytes  must outlive the reader.
    /// \return nothing for bytes that are no binary property list.
    static std::optional<BinaryPlistReader> Open(std::string_view bytes);

    Object Top() const { return m_top; }

    /// The value for a key of a dictionary.
    std::optional<Object> Member(Object dictionary, std::string_view key) const;
    std::optional<Object> Element(Object array, std::uint64_t index) const;
    std::optional<std::uint64_t> Uid(Object object) const;
    /// A number below 2^63.
    std::optional<std::int64_t> Number(Object object) const;
    std::optional<bool> Bool(Object object) const;
    /// A text of ASCII characters; others are not looked for here.
    std::optional<std::string_view> Text(Object object) const;

 private:
    struct Header {
        unsigned type;        ///< upper half of the marker byte
        std::uint64_t count;  ///< lower half, or the number that follows
        std::uint64_t body;   ///< offset of what follows
    };

    BinaryPlistReader() = default;
    std::optional<Header> HeaderOf(Object object) const;
    std::optional<Object> Reference(const Header& collection, std::uint64_t index) const;

    std::string_view m_objects;  ///< everything in front of the table of offsets
    std::string_view m_offsets;
    unsigned m_offsetBytes = 0;
    unsigned m_referenceBytes = 0;
    std::uint64_t m_count = 0;
    Object m_top = 0;
};

}  // namespace krutein
