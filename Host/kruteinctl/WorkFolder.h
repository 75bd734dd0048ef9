#pragma once

#include <string>

/// The temporary folder of one backup: `folder`/temp, in which the library lets the tool write, and which it
/// removes with everything in it when the backup is done.
///
/// Because of that, a folder of this name that is not kruteinctl's own is never used: ours carries a mark,
/// and the mark is locked while its run lives. What a killed run has left is removed.
class WorkFolder {
 public:
    /// \throws Failure when another run uses the folder, when a folder of the user's own is in the way, or
    ///         when it cannot be made.
    explicit WorkFolder(const std::string& folder);

    /// Removes the folder where it is still there.
    ~WorkFolder();
    WorkFolder(const WorkFolder&) = delete;
    WorkFolder& operator=(const WorkFolder&) = delete;

    const std::string& Path() const { return m_path; }

 private:
    std::string m_path;
    int m_mark = -1;
};
