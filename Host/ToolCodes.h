#pragma once

/// The return codes of the sample backup tool: it puts them into its exit message and ends with them,
/// kruteinctl says them in words. Described in Docs/formats.md ("Return codes"). Never change.
enum ToolCode : int {
    kToolDone = 0,
    kToolBadCommand = 10,     ///< the command line is not understood
    kToolNoDevice = 11,       ///< no such device is connected
    kToolNotWritable = 12,    ///< the destination cannot be written
    kToolDiskFull = 13,       ///< no space left at the destination
    kToolBackupDamaged = 14,  ///< a file of the backup is missing, short, or its catalogue cannot be read
    kToolNoBackup = 15,       ///< there is no backup of the device in the folder
    kToolWrongPassword = 16,  ///< the old backup password is not this one
    kToolFailed = 17          ///< anything else; standard error tells
};
