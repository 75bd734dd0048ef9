#pragma once

#include <dirent.h>
#include <sys/stat.h>
#include <sys/types.h>

#include <cstddef>
#include <string>

/// What the system services need of each other and of the platform. Internal. OpenPipe and what is done in
/// folders is implemented once per platform (std_objc_<platform>), the rest in std_objc.cpp.
namespace krutein {

/// Creates a pipe whose ends no other child of this process inherits.
/// \param ends  read end, then write end; untouched on failure.
bool OpenPipe(int (&ends)[2]);

/// Opens a folder for reading. \return null when it cannot be opened, or is a link that is not to be
/// followed.
DIR* OpenFolderStream(const std::string& path, bool followLink);

/// Opens a folder that lies in an open one; "." is that one itself. \return null also when it is a link.
/// \param path  of the open one, for systems that cannot look in it otherwise.
DIR* OpenFolderIn(DIR* folder, const std::string& path, const char* name);

/// lstat of a name in an open folder. \param path  as above.
bool StatIn(DIR* folder, const std::string& path, const char* name, struct stat& info);

/// unlink of a name in an open folder. \param path  as above.
bool RemoveIn(DIR* folder, const std::string& path, const char* name);

/// rmdir of a name in an open folder. \param path  as above.
bool RemoveFolderIn(DIR* folder, const std::string& path, const char* name);

/// How many names of a folder to read before what they name is removed. Few are still at hand; but some
/// systems leave names out when a folder changes while it is read, and there it is all of them.
extern const std::size_t kNamesAtOnce;

constexpr int kNoDescriptor = -1;

/// STD_OBJC_System with one close-on-exec descriptor that this child, and no other, inherits.
int RunShell(const char* commandLine, int* pid, bool wait, int* status, int inherited);

/// Waits for a child, also through interrupting signals.
/// \param status  the raw wait status; 0 when there was nothing to wait for.
/// \return false when there is no such child.
bool WaitForChild(pid_t child, int& status);

/// Waits on a background task for a child that nobody else knows of, so that none stays behind as a zombie.
void ReapInBackground(pid_t child);

/// True when removing `target` would remove `source`: they are the same, or `source` lies in it.
bool RemovingWouldTake(const std::string& target, const std::string& source);

}  // namespace krutein
