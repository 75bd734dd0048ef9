#pragma once

#include <cstdint>
#include <string>
#include <string_view>

/// Made-up content is the same on every run and every platform: it follows from texts, by way of numbers that
/// are defined here and not by the standard library.
namespace krutein {

/// The number at a place of an endless sequence that the seed chooses. All 64 bits look random.
constexpr std::uint64_t RandomAt(std::uint64_t seed, std::uint64_t place) {
    std::uint64_t bits = seed + (place + 1) * 0x9E3779B97F4A7C15ULL;
    bits = (bits ^ bits >> 30) * 0xBF58476D1CE4E5B9ULL;
    bits = (bits ^ bits >> 27) * 0x94D049BB133111EBULL;
    return bits ^ bits >> 31;
}

/// A seed that follows from a text.
constexpr std::uint64_t SeedOf(std::string_view text) {
    std::uint64_t hash = 0xCBF29CE484222325ULL;
    for (const char c : text)
        hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001B3ULL;
    return hash;
}

/// Hands out the numbers of one sequence. Two draws never belong into one expression: compilers differ in
/// which one they do first.
class Random {
 public:
    explicit Random(std::string_view seed) : m_seed(SeedOf(seed)) {}

    std::uint64_t Next() { return RandomAt(m_seed, m_place++); }

    /// From 0 to below the bound, which is small against 2^64.
    std::int64_t Below(std::int64_t bound) {
        return static_cast<std::int64_t>(Next() % static_cast<std::uint64_t>(bound));
    }

    /// Lower-case digits.
    std::string Hex(std::size_t digits);

    /// Upper-case, such as 0A1B2C3D-0A1B-0A1B-0A1B-0A1B2C3D4E5F.
    std::string Uuid();

 private:
    std::uint64_t m_seed;
    std::uint64_t m_place = 0;
};

}  // namespace krutein
