#include "Host/kruteinctl/Udid.h"

#include <algorithm>
#include <cctype>

#include "Host/kruteinctl/Failure.h"
#include "Host/kruteinctl/Text.h"

namespace {

constexpr std::size_t kOldDigits = 40;
constexpr std::size_t kNewDigits = 24;
constexpr std::size_t kDashAt = 8;

bool IsHex(const std::string& text) {
    return std::all_of(text.begin(), text.end(), [](unsigned char c) { return std::isxdigit(c) != 0; });
}

std::string Mapped(std::string text, int (*map)(int)) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [map](unsigned char c) { return static_cast<char>(map(c)); });
    return text;
}

}  // namespace

std::string CanonicalUdid(const std::string& text) {
    std::string digits = text;
    if (digits.size() == kNewDigits + 1 && digits[kDashAt] == '-') digits.erase(kDashAt, 1);
    if (IsHex(digits) && digits.size() == kOldDigits && text.size() == kOldDigits) {
        return Mapped(digits, std::tolower);
    }
    if (IsHex(digits) && digits.size() == kNewDigits) {
        return Mapped(digits, std::toupper).insert(kDashAt, "-");
    }
    throw Failure(ExitCode::kUsage,
                  "'" + Printable(text) +
                      "' is no device identifier: it has 40 hexadecimal digits, or 8 and 16 "
                      "with a dash between");
}
