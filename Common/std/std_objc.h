#pragma once

#include <string>

#include "Common/Export.h"

/// \file
/// System services. All functions may be called from any thread.

/// The full path of the host's executable; "" when the system does not tell.
KRUTEIN_API std::string STD_OBJC_GetCurrentAppPath();

/// Runs a command line with `/bin/sh -c` in a child process.
///
/// The child starts with no signal blocked and ends with 127 when the shell cannot be started. Only
/// descriptors without the close-on-exec flag reach it.
///
/// \param commandLine  UTF-8 text for the shell; null is refused.
/// \param pid          receives the child's id; may be null.
/// \param wait         true blocks until the child has ended; else waiting for it is up to the caller.
/// \param status       receives the raw wait status (as of waitpid), 0 when not waited for; may be null.
/// \return 0 when a child was started, -1 for a null command line, -2 when no process could be made. With -1
///         and -2 nothing is written to `pid` and `status`. How the command itself ended is in `status` only.
KRUTEIN_API int STD_OBJC_System(const char* commandLine, int* pid, bool wait, int* status);

/// True when a process runs whose program file has this name, as the kernel keeps it: cut to 16 characters,
/// so a longer name never matches.
KRUTEIN_API bool STD_OBJC_ProcessExist(std::string name);

/// Starts a program with one argument and does not wait for it; it is reaped in the background.
/// \param launchPath  path of the program file.
/// \return true when the program was started.
KRUTEIN_API bool STD_OBJC_CreateProcess(std::string launchPath, std::string argument);

/// Calls function(context) on a thread of the system's choice and returns at once. Several tasks run side by
/// side, in no certain order. A null function is ignored.
KRUTEIN_API void STD_OBJC_ExcuteAsyncTask(void (*function)(void*), void* context);

/// Asks a process to end (`kill`, the catchable request) from a background task and returns at once.
/// \param pid  process id; ids below 1, which mean whole groups of processes, are ignored.
KRUTEIN_API void STD_OBJC_KillProcessByPid(int pid);

/// Copies a file or a folder with everything in it. What is at `target` is removed first, but only when there
/// is something at `source`.
/// \return true when the copy is complete; false for null paths and, with nothing removed, when `target` is
///         `source` or a folder around it.
KRUTEIN_API bool STD_OBJC_FILE_CopyFile(const char* source, const char* target);

/// The system's version text followed directly by the system's name, "," when it has none; "" when the system
/// does not tell its version.
KRUTEIN_API std::string GetOSXVersion();
