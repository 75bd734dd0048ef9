#pragma once

#include <string>

/// Where a backup lies.
struct BackupPlace {
    std::string parent;  ///< folder, without a slash at its end
    std::string name;    ///< of the backup's own folder in it

    std::string Path() const { return parent + "/" + name; }
};

/// True when the folder holds a catalogue of either layout.
bool IsBackup(const std::string& folder);

/// The newest backup of a device in `folder`; or `folder` itself when it is a backup.
/// \throws Failure (no backup) when there is none.
BackupPlace FindBackup(const std::string& folder, const std::string& udid);

/// A folder in which a backup has the name of its device, as the backup tool expects it: the backup's own
/// parent, or a temporary folder with a link when its name carries a time.
class ToolView {
 public:
    /// \throws Failure when the temporary folder cannot be made.
    ToolView(const BackupPlace& backup, const std::string& udid);
    ~ToolView();
    ToolView(const ToolView&) = delete;
    ToolView& operator=(const ToolView&) = delete;

    const std::string& Folder() const { return m_folder; }

 private:
    std::string m_folder;
    bool m_temporary = false;
};
