#include "Host/Archiver/contents/Random.h"

namespace krutein {
namespace {

std::string Digits(Random& random, std::size_t count, const char* digits) {
    constexpr unsigned kDigitsInNumber = 16;
    std::string text(count, '0');
    std::uint64_t bits = 0;
    for (std::size_t i = 0; i < count; ++i) {
        if (i % kDigitsInNumber == 0) bits = random.Next();
        text[i] = digits[bits & 0x0F];
        bits >>= 4;
    }
    return text;
}

}  // namespace

std::string Random::Hex(std::size_t digits) {
    return Digits(*this, digits, "0123456789abcdef");
}

std::string Random::Uuid() {
    std::string uuid = Digits(*this, 36, "0123456789ABCDEF");
    for (const std::size_t hyphen : {8U, 13U, 18U, 23U})
        uuid[hyphen] = '-';
    return uuid;
}

}  // namespace krutein
