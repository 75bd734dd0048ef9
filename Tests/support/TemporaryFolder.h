#pragma once

#include <filesystem>
#include <string>

/// An empty folder that is removed with everything in it at the end of the test.
class TemporaryFolder {
 public:
    TemporaryFolder();
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    /// Its path, or that of something in it.
    std::string Path() const { return m_path.string(); }
    std::string Path(const std::string& name) const { return (m_path / name).string(); }

    /// Creates a file, and the folders above it, with this content. \return its path.
    std::string Write(const std::string& name, const std::string& content = "") const;

    /// The file's content; a failed test when it cannot be read.
    std::string Read(const std::string& name) const;

 private:
    std::filesystem::path m_path;
};

/// The content of any file; a failed test when it cannot be read.
std::string ReadWholeFile(const std::string& path);
