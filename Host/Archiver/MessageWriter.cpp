#include "Host/Archiver/MessageWriter.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstring>

#include "Host/Archiver/StopFlag.h"
#include "Host/Archiver/ToolError.h"

namespace krutein {
namespace {

/// A signal that comes just before the wait does not interrupt it: it is noticed so much later.
constexpr int kWaitMs = 100;

}  // namespace

bool MessageWriter::CanWriteTo(int descriptor) {
    const int flags = fcntl(descriptor, F_GETFL);
    return flags != -1 && (flags & O_ACCMODE) != O_RDONLY;
}

void MessageWriter::Progress(int done, int total, const std::string& text) {
    Send(kPipeProgress, done, total, text);
}

void MessageWriter::Exit(int code) {
    Send(kPipeExit, 0, code, "");
}

void MessageWriter::Send(PipeMessageType type, int arg1, int arg2, const std::string& text) {
    const std::size_t payload = text.empty() ? 0 : text.size() + 1;
    const PipeMessageHeader header{type, arg1, arg2, static_cast<std::int32_t>(payload)};
    m_message.assign(reinterpret_cast<const char*>(&header), sizeof header);
    m_message.append(text.c_str(), payload);
    WriteAll(m_message.data(), m_message.size());
}

/// In pieces for which a pipe that has room at all has room: no write blocks, so that a signal is never
/// missed. All but very long messages are one piece.
void MessageWriter::WriteAll(const char* bytes, std::size_t count) const {
    while (count > 0) {
        AwaitRoom();
        const ssize_t written = write(m_descriptor, bytes, std::min<std::size_t>(count, PIPE_BUF));
        if (written >= 0) {
            bytes += written;
            count -= static_cast<std::size_t>(written);
        } else if (errno == EPIPE) {
            throw Stopped{kToolFailed};  // the host is gone: there is nobody left to back up for
        } else if (errno != EINTR && errno != EAGAIN) {
            ThrowErrno("cannot write to the pipe", errno);
        }
    }
}

void MessageWriter::AwaitRoom() const {
    pollfd waited{m_descriptor, POLLOUT, 0};
    int ready = 0;
    do {
        ThrowIfStopped();
        ready = poll(&waited, 1, kWaitMs);
    } while (ready == 0 || (ready < 0 && errno == EINTR));
}

}  // namespace krutein
