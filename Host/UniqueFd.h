#pragma once

#include <unistd.h>

#include <cerrno>
#include <utility>

namespace krutein {

/// Owns a file descriptor.
class UniqueFd {
 public:
    explicit UniqueFd(int descriptor = -1) : m_descriptor(descriptor) {}
    UniqueFd(UniqueFd&& other) noexcept : m_descriptor(other.Release()) {}
    UniqueFd& operator=(UniqueFd&& other) noexcept {
        std::swap(m_descriptor, other.m_descriptor);
        return *this;
    }
    ~UniqueFd() { Close(); }
    UniqueFd(const UniqueFd&) = delete;
    UniqueFd& operator=(const UniqueFd&) = delete;

    bool IsOpen() const { return m_descriptor >= 0; }
    int Get() const { return m_descriptor; }
    int Release() { return std::exchange(m_descriptor, -1); }

    /// \return 0, or the error number: some systems tell only now that what was written is lost.
    int Close() {
        const int descriptor = Release();
        // After EINTR the descriptor is gone all the same.
        return descriptor >= 0 && close(descriptor) != 0 && errno != EINTR ? errno : 0;
    }

 private:
    int m_descriptor;
};

}  // namespace krutein
