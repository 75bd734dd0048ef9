#pragma once

#include "Common/Export.h"

/// \file
/// The host's logging contract. The library writes its log through these two functions only; they live in a
/// shared library of their own, which a host replaces by its own one (CMake option KRUTEIN_LOG_LIBRARY).
///
/// The library that comes with krutein appends to a file in the current user's log folder:
/// `$KRUTEIN_LOG_DIR`, else `$XDG_STATE_HOME/krutein`, else the platform's usual place below the home folder.
/// It never fails its caller: without a place to write, lines are dropped.
extern "C" {

/// Opens the log. May be called any number of times, from any thread; a call with the name of the open log
/// changes nothing, one with another name goes over to that file.
///
/// \param fileName    name of the log file, without a folder ("Sync.log"); null or empty is ignored.
/// \param loggerName  name that stands in each line; null for the default one.
KRUTEIN_API void InitLogA(const char* fileName, const char* loggerName);

/// Writes one line. May be called from any thread; before InitLogA nothing is written.
///
/// \param function    name of the calling function.
/// \param sourceFile  source file as a path from the project's root ("Module/Sync/Backup.cpp").
/// \param line        line in that file.
/// \param level       1 for everything that the library itself writes.
/// \param format      printf format; line ends at its end are dropped, each call is a line anyway.
/// \return            0 when the line was handed on, -1 when there is no log or no text.
KRUTEIN_API int LogHandlerA(const char* function, const char* sourceFile, int line, int level,
                            const char* format, ...) KRUTEIN_PRINTF(5, 6);
}
