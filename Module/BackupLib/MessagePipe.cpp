#include "Module/BackupLib/MessagePipe.h"

#include <fcntl.h>
#include <poll.h>
#include <pthread.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <new>

#include "Common/std/platform.h"

namespace krutein {
namespace {

constexpr std::size_t kBufferBytes = std::size_t{64} * 1024;
/// A payload's buffer grows with the bytes that really come, so that a wrong length costs no memory.
constexpr std::size_t kPayloadStepBytes = std::size_t{1024} * 1024;

void CloseEnd(int& end) {
    if (end != kNoDescriptor) close(end);
    end = kNoDescriptor;
}

/// \return as read; EINTR never.
ssize_t ReadSome(int descriptor, void* to, std::size_t bytes) {
    ssize_t count = -1;
    do {
        count = read(descriptor, to, bytes);
    } while (count < 0 && errno == EINTR);
    return count;
}

/// The only place where the reader can be cancelled.
void AwaitReadable(int descriptor) {
    pollfd waited{descriptor, POLLIN, 0};
    int state = 0;
    int ready = -1;
    pthread_setcancelstate(PTHREAD_CANCEL_ENABLE, &state);
    do {
        ready = poll(&waited, 1, -1);
    } while (ready < 0 && errno == EINTR);
    pthread_setcancelstate(state, nullptr);
}

}  // namespace

MessagePipe::MessagePipe() : m_readEnd(kNoDescriptor), m_writeEnd(kNoDescriptor) {}

MessagePipe::~MessagePipe() {
    Close();
}

bool MessagePipe::Open() {
    Close();
    try {
        m_buffer.resize(kBufferBytes);
    } catch (const std::bad_alloc&) {
        return false;
    }
    int ends[2] = {kNoDescriptor, kNoDescriptor};
    if (!OpenPipe(ends)) return false;
    m_readEnd = ends[0];
    m_writeEnd = ends[1];
    fcntl(m_readEnd, F_SETFL, O_NONBLOCK);  // of this end only: the tool's writes still block
    return true;
}

void MessagePipe::Close() {
    CloseEnd(m_readEnd);
    CloseEnd(m_writeEnd);
    m_begin = m_end = 0;
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_read = m_limit = 0;
    m_ended = m_waiting = m_left = false;
}

void MessagePipe::End() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (m_ended) return;
    int waiting = 0;
    if (m_readEnd == kNoDescriptor || ioctl(m_readEnd, FIONREAD, &waiting) != 0) waiting = 0;
    m_limit = m_read + static_cast<unsigned long long>(waiting);
    m_ended = true;
}

void MessagePipe::AwaitReader() {
    std::unique_lock<std::mutex> lock(m_mutex);
    m_settled.wait(lock, [this] { return m_left || (m_waiting && m_read >= m_limit); });
}

bool MessagePipe::Next(Message& message) {
    for (;;) {
        if (!Take(&message.header, sizeof message.header)) return false;
        message.payload = nullptr;
        if (message.header.length <= 0) return true;
        const auto bytes = static_cast<std::size_t>(message.header.length);
        try {
            if (!TakePayload(bytes)) return false;
            message.payload = m_payload.data();
            return true;
        } catch (const std::bad_alloc&) {
            // Without memory for it the message is dropped; those behind it are still read.
            if (!Skip(bytes - m_payload.size())) return false;
        }
    }
}

void MessagePipe::Discard() {
    while (Fill()) {
    }
}

void MessagePipe::Leave() {
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_left = true;
    }
    m_settled.notify_all();
}

bool MessagePipe::Take(void* to, std::size_t bytes) {
    auto* next = static_cast<char*>(to);
    while (bytes > 0) {
        if (m_begin == m_end && !Fill()) return false;
        const std::size_t count = std::min(bytes, m_end - m_begin);
        std::memcpy(next, m_buffer.data() + m_begin, count);
        m_begin += count;
        next += count;
        bytes -= count;
    }
    return true;
}

/// When it throws, m_payload holds what has been taken.
bool MessagePipe::TakePayload(std::size_t bytes) {
    m_payload.clear();
    std::size_t taken = 0;
    while (taken < bytes) {
        const std::size_t step = std::min(bytes - taken, kPayloadStepBytes);
        m_payload.resize(taken + step);
        if (!Take(m_payload.data() + taken, step)) return false;
        taken += step;
    }
    m_payload.push_back('\0');
    return true;
}

bool MessagePipe::Skip(std::size_t bytes) {
    char dropped[4096];
    while (bytes > 0) {
        const std::size_t count = std::min(bytes, sizeof dropped);
        if (!Take(dropped, count)) return false;
        bytes -= count;
    }
    return true;
}

/// Reads as much as there is, waiting until there is something. The read itself never blocks and stands under
/// the lock, so that End sees each byte either in the pipe or in m_read.
bool MessagePipe::Fill() {
    if (m_readEnd == kNoDescriptor) return false;
    for (;;) {
        {
            const std::lock_guard<std::mutex> lock(m_mutex);
            m_waiting = false;
            if (m_ended && m_read >= m_limit) return false;
            const ssize_t count = ReadSome(m_readEnd, m_buffer.data(), m_buffer.size());
            if (count > 0) {
                m_read += static_cast<unsigned long long>(count);
                m_begin = 0;
                m_end = static_cast<std::size_t>(count);
                return true;
            }
            if (count == 0 || errno != EAGAIN) return false;
            m_waiting = true;
        }
        m_settled.notify_all();
        AwaitReadable(m_readEnd);
    }
}

}  // namespace krutein
