#pragma once

#include <cstdint>
#include <string>

// Checks of folders before the library is called: their names end up in a shell command between double quotes
// and in the tool's '|'-separated words.

/// The absolute path of a folder that the user named, without a slash at its end. It need not exist.
/// \throws Failure (usage) when the path is empty, too long for a command line, or holds a character that the
///         shell or the tool would interpret.
std::string CheckedFolder(const std::string& folder);

/// Creates the folder, and those above it, where they are missing.
/// \throws Failure (not writable) when it cannot be created, is no folder, or nothing can be created in it.
void EnsureWritable(const std::string& folder);

/// Bytes that this user may still write at the folder.
/// \throws Failure (not writable) when the system does not tell.
std::uint64_t FreeBytes(const std::string& folder);
