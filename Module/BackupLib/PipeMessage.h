#pragma once

#include <cstdint>

/// The messages that the backup tool writes to the pipe whose descriptor its command line names. Described in
/// Docs/formats.md ("Pipe messages"); read by Module/BackupLib/MessagePipe, held by Tests/Module/BackupLib.
/// The layout and the numbers are fixed with tools in the field: never change.
namespace krutein {

enum PipeMessageType : std::uint32_t {
    kPipeProgress = 1,  ///< handed to the callback
    kPipeExit = 2       ///< arg2 is the tool's return code; the last message of a run
};

/// Precedes every message, in the byte order of the machine.
struct PipeMessageHeader {
    std::uint32_t type;   ///< PipeMessageType; other values are read and ignored
    std::int32_t arg1;    ///< progress: the tool's first number
    std::int32_t arg2;    ///< progress: the tool's second number; exit: the return code
    std::int32_t length;  ///< bytes of payload that follow; none when it is not above 0
};

static_assert(sizeof(PipeMessageHeader) == 16, "the header is 16 bytes on the wire");

}  // namespace krutein
