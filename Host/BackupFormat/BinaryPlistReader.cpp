#include "Host/BackupFormat/BinaryPlistReader.h"

#include <limits>

namespace krutein {
namespace {

// The form: the magic, the objects, the table of their offsets, and a trailer. Numbers have their most
// significant byte first.
constexpr std::string_view kMagic = "bplist00";

// The trailer: 6 bytes unused, two widths, and three numbers of 8 bytes.
constexpr std::size_t kTrailerBytes = 32;
constexpr std::size_t kOffsetWidthAt = 6;
constexpr std::size_t kReferenceWidthAt = 7;
constexpr std::size_t kCountAt = 8;
constexpr std::size_t kTopAt = 16;
constexpr std::size_t kOffsetsAt = 24;

// The types in the upper half of an object's first byte.
constexpr unsigned kSingle = 0x0;
constexpr unsigned kNumber = 0x1;
constexpr unsigned kAsciiText = 0x5;
constexpr unsigned kUid = 0x8;
constexpr unsigned kArray = 0xA;
constexpr unsigned kDictionary = 0xD;

// The values of the single objects in the lower half.
constexpr unsigned kFalse = 0x8;
constexpr unsigned kTrue = 0x9;

/// In the lower half instead of a count: the count follows as a number.
constexpr unsigned kCountFollows = 0xF;

constexpr std::uint64_t kMaxWidth = 8;
constexpr std::uint64_t kMaxExponent = 3;  // of a number's width: 2^3 bytes

/// `width` bytes as a number, the most significant first.
std::optional<std::uint64_t> BigEndian(std::string_view bytes, std::uint64_t offset, std::uint64_t width) {
    if (width == 0 || width > kMaxWidth || offset > bytes.size() || width > bytes.size() - offset) {
        return std::nullopt;
    }
    std::uint64_t value = 0;
    for (const char byte : bytes.substr(offset, width))
        value = value << 8 | static_cast<unsigned char>(byte);
    return value;
}

}  // namespace

std::optional<BinaryPlistReader> BinaryPlistReader::Open(std::string_view bytes) {
    if (bytes.size() < kMagic.size() + kTrailerBytes || bytes.substr(0, kMagic.size()) != kMagic) {
        return std::nullopt;
    }
    const std::size_t end = bytes.size() - kTrailerBytes;
    const std::string_view trailer = bytes.substr(end);
    const std::uint64_t offsets = *BigEndian(trailer, kOffsetsAt, 8);
    if (offsets > end) return std::nullopt;
    BinaryPlistReader plist;
    plist.m_objects = bytes.substr(0, offsets);
    plist.m_offsets = bytes.substr(offsets, end - offsets);
    plist.m_offsetBytes = static_cast<unsigned char>(trailer[kOffsetWidthAt]);
    plist.m_referenceBytes = static_cast<unsigned char>(trailer[kReferenceWidthAt]);
    plist.m_count = *BigEndian(trailer, kCountAt, 8);
    plist.m_top = *BigEndian(trailer, kTopAt, 8);
    return plist;
}

std::optional<BinaryPlistReader::Object> BinaryPlistReader::Member(Object dictionary,
                                                                   std::string_view key) const {
    const std::optional<Header> header = HeaderOf(dictionary);
    if (!header || header->type != kDictionary) return std::nullopt;
    for (std::uint64_t i = 0; i < header->count; ++i) {
        const std::optional<Object> name = Reference(*header, i);
        if (!name) return std::nullopt;
        if (Text(*name) == key) return Reference(*header, header->count + i);
    }
    return std::nullopt;
}

std::optional<BinaryPlistReader::Object> BinaryPlistReader::Element(Object array, std::uint64_t index) const {
    const std::optional<Header> header = HeaderOf(array);
    if (!header || header->type != kArray || index >= header->count) return std::nullopt;
    return Reference(*header, index);
}

std::optional<std::uint64_t> BinaryPlistReader::Uid(Object object) const {
    const std::optional<Header> header = HeaderOf(object);
    if (!header || header->type != kUid) return std::nullopt;
    return BigEndian(m_objects, header->body, header->count + 1);
}

std::optional<std::int64_t> BinaryPlistReader::Number(Object object) const {
    const std::optional<Header> header = HeaderOf(object);
    if (!header || header->type != kNumber || header->count > kMaxExponent) return std::nullopt;
    const std::optional<std::uint64_t> value = BigEndian(m_objects, header->body, 1ULL << header->count);
    if (!value || *value > static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max())) {
        return std::nullopt;
    }
    return static_cast<std::int64_t>(*value);
}

std::optional<bool> BinaryPlistReader::Bool(Object object) const {
    const std::optional<Header> header = HeaderOf(object);
    if (!header || header->type != kSingle) return std::nullopt;
    if (header->count == kFalse) return false;
    if (header->count == kTrue) return true;
    return std::nullopt;
}

std::optional<std::string_view> BinaryPlistReader::Text(Object object) const {
    const std::optional<Header> header = HeaderOf(object);
    if (!header || header->type != kAsciiText) return std::nullopt;
    if (header->body > m_objects.size() || header->count > m_objects.size() - header->body) {
        return std::nullopt;
    }
    return m_objects.substr(header->body, header->count);
}

std::optional<BinaryPlistReader::Header> BinaryPlistReader::HeaderOf(Object object) const {
    // Divided instead of multiplied: the number of the object can be anything.
    if (m_offsetBytes == 0 || object >= m_count || object >= m_offsets.size() / m_offsetBytes) {
        return std::nullopt;
    }
    const std::optional<std::uint64_t> offset = BigEndian(m_offsets, object * m_offsetBytes, m_offsetBytes);
    if (!offset || *offset >= m_objects.size()) return std::nullopt;
    const unsigned marker = static_cast<unsigned char>(m_objects[*offset]);
    Header header{marker >> 4, marker & 0x0F, *offset + 1};
    // Numbers and UIDs are that many bytes wide; only for the others is the count a length.
    if (header.count != kCountFollows || header.type == kNumber || header.type == kUid) return header;

    const std::optional<std::uint64_t> count = BigEndian(m_objects, header.body, 1);
    if (!count || *count >> 4 != kNumber || (*count & 0x0F) > kMaxExponent) return std::nullopt;
    const std::uint64_t width = 1ULL << (*count & 0x0F);
    const std::optional<std::uint64_t> length = BigEndian(m_objects, header.body + 1, width);
    if (!length) return std::nullopt;
    header.count = *length;
    header.body += 1 + width;
    return header;
}

std::optional<BinaryPlistReader::Object> BinaryPlistReader::Reference(const Header& collection,
                                                                      std::uint64_t index) const {
    // A count may be so high that this would overflow: no reference can lie beyond the bytes.
    if (m_referenceBytes == 0 || index > m_objects.size()) return std::nullopt;
    return BigEndian(m_objects, collection.body + index * m_referenceBytes, m_referenceBytes);
}

}  // namespace krutein
