#pragma once

#include <string>

namespace krutein {

/// A folder for copies of a backup's files, removed with all that is in it at the end.
class ScratchFolder {
 public:
    /// \throws std::system_error
    ScratchFolder();
    ~ScratchFolder();
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;

    /// Copies a file, not through a link. \return the copy's path.
    /// \throws std::system_error
    std::string Copy(const std::string& path, const std::string& name) const;

 private:
    std::string m_path;
};

}  // namespace krutein
