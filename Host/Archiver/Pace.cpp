#include "Host/Archiver/Pace.h"

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <system_error>

#include "Host/Archiver/StopFlag.h"
#include "Host/Archiver/ToolError.h"

namespace krutein {
namespace {

constexpr char kVariable[] = "KRUTEIN_SAMPLE_FILES_PER_SECOND";
constexpr std::int64_t kMaxFilesPerSecond = 1'000'000;
/// A signal that comes just before a nap does not end it: naps are short.
constexpr std::chrono::nanoseconds kNap = std::chrono::milliseconds(50);

std::int64_t ReadVariable() {
    const char* const text = std::getenv(kVariable);
    if (text == nullptr || *text == '\0') return 0;
    const char* const end = text + std::strlen(text);
    std::int64_t number = 0;
    const auto [stop, error] = std::from_chars(text, end, number);
    if (error != std::errc() || stop != end || number < 1 || number > kMaxFilesPerSecond) {
        throw ToolError(kToolFailed, std::string(kVariable) + " must be a number from 1 to " +
                                         std::to_string(kMaxFilesPerSecond));
    }
    return number;
}

}  // namespace

Pace::Pace() : m_filesPerSecond(ReadVariable()), m_start(std::chrono::steady_clock::now()) {}

void Pace::Await() {
    if (m_filesPerSecond == 0) return;
    ++m_files;
    const auto due = m_start + std::chrono::nanoseconds(m_files * 1'000'000'000 / m_filesPerSecond);
    for (;;) {
        ThrowIfStopped();
        const std::chrono::nanoseconds left = due - std::chrono::steady_clock::now();
        if (left.count() <= 0) return;
        const timespec nap{0, static_cast<long>(std::min(left, kNap).count())};
        nanosleep(&nap, nullptr);
    }
}

}  // namespace krutein
