#pragma once

#include "Host/Archiver/CommandLine.h"
#include "Host/Archiver/MessageWriter.h"

/// What the library asks for, one function for each verb. All send their progress and leave the exit message
/// to the caller; they throw ToolError and Stopped.
namespace krutein {

void BackUp(const CommandLine& command, MessageWriter& messages);

/// Reads everything that a restore would send to the device.
void Restore(const CommandLine& command, MessageWriter& messages);

/// The same for the files that hold settings, from the backup of the source.
void RestoreSettings(const CommandLine& command, MessageWriter& messages);

/// Sends one message that describes the finished backup of the source, or when there is none the backup that
/// the target would make.
void TellInfo(const CommandLine& command, MessageWriter& messages);

void ChangePassword(const CommandLine& command);

}  // namespace krutein
