#include "Host/Archiver/contents/FileBytes.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "Host/Archiver/contents/Random.h"

namespace krutein {
namespace {

constexpr std::size_t kWordBytes = 8;

/// The start of a JPEG file: start of image, and a JFIF header for square pixels without a thumbnail.
constexpr std::string_view kPictureStart{
    "\xFF\xD8\xFF\xE0\x00\x10JFIF\x00\x01\x01\x00\x00\x01\x00\x01\x00\x00", 20};
constexpr std::string_view kPictureEnd{"\xFF\xD9", 2};

/// One for each of 64 numbers, about as often as in writing.
constexpr char kLetters[] = "eeeeeettttaaaooooiiinnnsssrrhhlddcumfpgwybvkxjqz           ...,\n";
static_assert(sizeof kLetters == 65, "64 letters");

/// The lowest byte first, whatever the machine.
void PutWord(char* to, std::uint64_t word) {
    for (std::size_t i = 0; i < kWordBytes; ++i)
        to[i] = static_cast<char>(word >> (8 * i));
}

/// Copies what lies both in the piece and in a text that stands at `offset` of the file.
void Overlay(char* piece, std::int64_t begin, std::size_t count, std::string_view text, std::int64_t offset) {
    for (std::size_t i = 0; i < text.size(); ++i) {
        const std::int64_t place = offset + static_cast<std::int64_t>(i) - begin;
        if (place >= 0 && place < static_cast<std::int64_t>(count)) piece[place] = text[i];
    }
}

}  // namespace

FileBytes::FileBytes(std::string given)
    : m_isGiven(true), m_given(std::move(given)), m_size(static_cast<std::int64_t>(m_given.size())) {}

FileBytes::FileBytes(Kind kind, std::int64_t size, std::uint64_t seed)
    : m_isGiven(false), m_kind(kind), m_size(size), m_seed(seed) {}

std::size_t FileBytes::Read(char* to, std::size_t room) {
    const auto left = static_cast<std::uint64_t>(m_size - m_done);
    const auto count = static_cast<std::size_t>(std::min<std::uint64_t>(left, room));
    if (m_isGiven) {
        m_given.copy(to, count, static_cast<std::size_t>(m_done));
    } else {
        MakeUp(to, count);
        Decorate(to, count);
    }
    m_done += static_cast<std::int64_t>(count);
    return count;
}

std::string FileBytes::All() && {
    std::string bytes(static_cast<std::size_t>(m_size), '\0');
    Read(bytes.data(), bytes.size());
    return bytes;
}

/// The words of a sequence, of which only the first and the last may be cut.
void FileBytes::MakeUp(char* to, std::size_t count) const {
    auto place = static_cast<std::uint64_t>(m_done);
    while (count > 0) {
        const std::size_t skipped = place % kWordBytes;
        const std::size_t taken = std::min(count, kWordBytes - skipped);
        const std::uint64_t word = RandomAt(m_seed, place / kWordBytes);
        if (taken == kWordBytes) {
            PutWord(to, word);
        } else {
            char bytes[kWordBytes];
            PutWord(bytes, word);
            std::copy_n(bytes + skipped, taken, to);
        }
        place += taken;
        to += taken;
        count -= taken;
    }
}

void FileBytes::Decorate(char* to, std::size_t count) const {
    if (m_kind == Kind::kText) {
        std::transform(to, to + count, to,
                       [](char c) { return kLetters[static_cast<unsigned char>(c) % 64]; });
    } else if (m_kind == Kind::kPicture) {
        Overlay(to, m_done, count, kPictureEnd, m_size - static_cast<std::int64_t>(kPictureEnd.size()));
        Overlay(to, m_done, count, kPictureStart, 0);
    }
}

}  // namespace krutein
