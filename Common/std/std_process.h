#pragma once

#include <string>
#include <vector>

#include "Common/Export.h"

/// \file
/// Processes. All functions may be called from any thread.

/// Sleeps, also through interrupting signals. A time below 1 returns at once. \return 0.
KRUTEIN_API int ps_sleep(int milliseconds);

/// Asks every process whose name matches to end, with `pkill`. The name goes into a shell command as it
/// stands: pass fixed names only. \return false for a null or empty name, else true, whether there was such a
/// process or not.
KRUTEIN_API bool ps_killAllProcess(const char* name);

/// Kills one process (`kill -9`) in the background and returns at once.
/// \return true; false, and nothing is done, for ids below 1, which mean whole groups of processes.
KRUTEIN_API bool ps_killProcess(int pid);

/// Runs a command line with the shell.
/// \param pid   receives the process id when the process was started; may be null.
/// \param wait  true blocks until the process has ended; otherwise it is the caller's to wait for.
/// \return true when the process was started.
KRUTEIN_API bool ps_createProcess(std::string commandLine, int* pid, bool wait);

/// True when a process of this name runs (see STD_OBJC_ProcessExist); false for a null or empty name.
KRUTEIN_API bool ps_ExistProcess(const char* name);

/// \{
/// Entry points that do nothing here. ps_getAllProcessID empties the list and is true; the others answer null
/// or false and leave their outputs as they are.
KRUTEIN_API bool ps_getAllProcessID(std::vector<int>& ids);
KRUTEIN_API bool ps_getProcessNameByID(int pid, std::string& name);
KRUTEIN_API void* ps_loadLibrary(const char* path);
KRUTEIN_API void* ps_getProcAddress(void* library, const char* symbol);
KRUTEIN_API void* ps_getProcAddress(const char* symbol, int ordinal);
KRUTEIN_API bool ps_getEnv(std::string name, std::string& value);
KRUTEIN_API bool ps_addEnv(std::string name, std::string value);
KRUTEIN_API bool ps_killProcessWhenPathInFolder(std::vector<std::string>& paths,
                                                std::vector<std::string>& folders);
/// \}
