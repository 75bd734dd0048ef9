#pragma once

#include <dirent.h>

#include <cstddef>
#include <string>
#include <vector>

/// Reading folders for the helpers and for pruning: the names first, what is done with them afterwards, so
/// that a folder can be changed while its names are looked at, and a deep tree holds one descriptor only.
/// Internal.
namespace krutein {

/// The names in one folder, in the order in which the system yields them, without "." and "..".
class FolderNames {
 public:
    struct Entry {
        std::size_t name;  ///< offset of the text
        bool isFolder;     ///< what a listing takes for one: block devices and sockets too
    };

    const std::vector<Entry>& Entries() const { return m_entries; }
    const char* NameOf(const Entry& entry) const { return m_names.data() + entry.name; }

    bool HasFolder() const { return m_hasFolder; }

    void Add(const char* name, bool isFolder);

 private:
    std::string m_names;  ///< each with its NUL
    std::vector<Entry> m_entries;
    bool m_hasFolder = false;
};

/// A folder that is open. Where the system can, names are looked up in it and not by a path, which might lead
/// elsewhere by then.
class OpenedFolder {
 public:
    OpenedFolder() = default;
    ~OpenedFolder() { Close(); }
    OpenedFolder(const OpenedFolder&) = delete;
    OpenedFolder& operator=(const OpenedFolder&) = delete;

    /// Closes what is open and opens this one. \return false when it cannot be opened.
    bool Open(const std::string& path, bool followLink);
    /// The same for a folder below an open one, "a/b", or "" for that one once more. No link on the way to it
    /// is followed, also when a folder has become one meanwhile.
    bool OpenBelow(const OpenedFolder& root, const std::string& below);
    void Close();
    bool IsOpen() const { return m_stream != nullptr; }

    // The folder is open for these.
    /// Adds at most so many names, those behind the ones read before.
    /// \return false when there are no more.
    bool Read(FolderNames& names, std::size_t atMost) const;
    void ReadAll(FolderNames& names) const;
    /// Size in bytes of a file, a link's own; 0 when it cannot be told.
    long long BytesOf(const char* name) const;
    /// Removes a file or link. \return false when it is still there.
    bool Remove(const char* name) const;
    /// Removes a folder if it is empty. \return false when it is still there.
    bool RemoveFolder(const char* name) const;

 private:
    std::string m_path;
    DIR* m_stream = nullptr;
};

/// Size in bytes of all files below a folder, links by their own size; 0 when it cannot be opened.
long long FolderBytes(const std::string& path);

}  // namespace krutein
