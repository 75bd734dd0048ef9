#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "Module/BackupLib/PipeMessage.h"

namespace krutein {

/// The tool's end of the message pipe. All functions throw Stopped when the run is to stop, also while they
/// wait for a slow reader, and when there is no reader any more.
class MessageWriter {
 public:
    /// \param descriptor  stays the caller's.
    explicit MessageWriter(int descriptor) : m_descriptor(descriptor) {}

    /// True for an open descriptor that can be written to.
    static bool CanWriteTo(int descriptor);

    /// \param text  what the host shows; goes without payload when it is empty.
    void Progress(int done, int total, const std::string& text);

    /// The last message of a run.
    void Exit(int code);

 private:
    void Send(PipeMessageType type, int arg1, int arg2, const std::string& text);
    void WriteAll(const char* bytes, std::size_t count) const;
    void AwaitRoom() const;

    int m_descriptor;
    std::string m_message;  ///< kept for its memory: there is a message for every file
};

}  // namespace krutein
