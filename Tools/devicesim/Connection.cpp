#include "Tools/devicesim/Connection.h"

#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

namespace devicesim {
namespace {

// A frame may announce more than ever comes.
constexpr std::size_t kReadStepBytes = 65536;
constexpr std::chrono::milliseconds kForever{-1};

/// \return true when the other side has gone, false when the time is over.
bool AwaitHangUp(int descriptor, std::chrono::milliseconds atMost) {
    const auto end = std::chrono::steady_clock::now() + atMost;
    for (;;) {
        int wait = -1;
        if (atMost != kForever) {
            const auto left = end - std::chrono::steady_clock::now();
            wait = static_cast<int>(std::chrono::ceil<std::chrono::milliseconds>(left).count());
            if (wait <= 0) return false;
        }
        pollfd ended{descriptor, 0, 0};  // an end is told without being asked for
        if (poll(&ended, 1, wait) > 0) return true;
    }
}

}  // namespace

Connection::~Connection() {
    close(m_descriptor);
}

bool Connection::Read(std::string& bytes, std::size_t count) const {
    bytes.clear();
    while (bytes.size() < count) {
        const std::size_t begin = bytes.size();
        bytes.resize(begin + std::min(count - begin, kReadStepBytes));
        const ssize_t got = recv(m_descriptor, bytes.data() + begin, bytes.size() - begin, 0);
        if (got == 0 || (got < 0 && errno != EINTR)) return false;
        bytes.resize(begin + (got < 0 ? 0 : static_cast<std::size_t>(got)));
    }
    return true;
}

bool Connection::Write(const std::string& bytes) const {
    for (std::size_t begin = 0; begin < bytes.size();) {
        const ssize_t written = send(m_descriptor, bytes.data() + begin, bytes.size() - begin, 0);
        if (written < 0 && errno != EINTR) return false;
        begin += written < 0 ? 0 : static_cast<std::size_t>(written);
    }
    return true;
}

bool Connection::WriteAtOnce(const std::string& bytes) const {
    const ssize_t written = send(m_descriptor, bytes.data(), bytes.size(), MSG_DONTWAIT);
    if (written == static_cast<ssize_t>(bytes.size())) return true;
    Shutdown();
    return false;
}

bool Connection::Pause(std::chrono::milliseconds time) const {
    return !AwaitHangUp(m_descriptor, time);
}

void Connection::AwaitEnd() const {
    AwaitHangUp(m_descriptor, kForever);
}

void Connection::Shutdown() const {
    shutdown(m_descriptor, SHUT_RDWR);
}

}  // namespace devicesim
