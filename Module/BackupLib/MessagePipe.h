#pragma once

#include <condition_variable>
#include <cstddef>
#include <mutex>
#include <vector>

#include "Module/BackupLib/PipeMessage.h"

namespace krutein {

/// The pipe on which one run of the backup tool reports, and the reading of its messages. Internal.
///
/// Two threads use it. The owner opens it before the run, calls End and AwaitReader when the tool has ended,
/// and then cancels and joins the reader. The reader takes messages one after the other and may be cancelled
/// only while it waits on an empty pipe: never in a callback, never with a lock or half a message in hand
/// that the tool has written to its end. What lay in the pipe when the tool ended is always read first.
class MessagePipe {
 public:
    struct Message {
        PipeMessageHeader header{};
        void* payload = nullptr;  ///< null when there is none; valid until the next call
    };

    MessagePipe();
    ~MessagePipe();
    MessagePipe(const MessagePipe&) = delete;
    MessagePipe& operator=(const MessagePipe&) = delete;

    // For the owner.

    /// Opens a fresh pipe, closing an earlier one. No child of the process inherits its ends by itself.
    bool Open();
    /// Closes both ends. Only when no reader is left.
    void Close();
    /// The descriptor that the tool writes to; -1 when the pipe is not open.
    int WriteEnd() const { return m_writeEnd; }
    /// The tool has ended: what lies in the pipe now is the last that is read. Later calls change nothing.
    void End();
    /// After End: blocks until the reader has taken all of that, however long its callbacks run, and either
    /// waits on the empty pipe, where it can be cancelled, or has left.
    void AwaitReader();

    // For the reader.

    /// Takes the next message, waiting for it. Pieces are put together; bytes after the payload are 0, so
    /// that a text without its own NUL is not read past its end. \return false when the pipe is not open, and
    /// after End when everything has been read.
    bool Next(Message& message);
    /// Reads and drops everything until the end, so that a tool never blocks on a full pipe.
    void Discard();
    /// The reader takes no more messages.
    void Leave();

 private:
    bool Take(void* to, std::size_t bytes);
    bool TakePayload(std::size_t bytes);
    bool Skip(std::size_t bytes);
    bool Fill();

    int m_readEnd;
    int m_writeEnd;

    // Of the reader alone. Kept here and not on its stack: a cancelled thread may not run destructors.
    std::vector<char> m_buffer;
    std::size_t m_begin = 0;  ///< first byte of m_buffer that has not been taken
    std::size_t m_end = 0;    ///< end of the bytes in m_buffer
    std::vector<char> m_payload;

    // Shared, under the mutex.
    std::mutex m_mutex;
    std::condition_variable m_settled;
    unsigned long long m_read = 0;   ///< bytes read from the pipe
    unsigned long long m_limit = 0;  ///< after End: the value of m_read at which all has been read
    bool m_ended = false;
    bool m_waiting = false;
    bool m_left = false;
};

}  // namespace krutein
