#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>

namespace krutein {

/// The two layouts of a backup.
enum class BackupLayout {
    kNewer,  ///< of system version 10 and later: files in folders, Manifest.db
    kOlder   ///< of version 9 and earlier: files side by side, Manifest.mbdb
};

/// The name of a file inside a backup. Only what was parsed is one, so that none can hold a path.
class FileId {
 public:
    static constexpr std::size_t kDigits = 40;

    /// \return nothing for what is not 40 hexadecimal digits; their case does not matter.
    static std::optional<FileId> Parse(std::string_view text);

    /// That of a file on the device.
    static FileId Of(const std::string& domain, const std::string& path);

    /// In lower case.
    std::string Text() const;

    /// The folder in a backup that the file lies in; "" for the backup's own.
    std::string FolderIn(BackupLayout layout) const;

    /// Its path in a backup.
    std::string PlaceIn(BackupLayout layout) const;

    friend bool operator==(const FileId& a, const FileId& b) { return a.m_bytes == b.m_bytes; }
    friend bool operator<(const FileId& a, const FileId& b) { return a.m_bytes < b.m_bytes; }

 private:
    std::array<unsigned char, kDigits / 2> m_bytes{};
};

}  // namespace krutein
