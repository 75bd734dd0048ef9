#pragma once

/// \file
/// What the types of backups keep.

#include <string>
#include <vector>

#include "Common/Export.h"
#include "Common/ini/IniObj.h"
#include "Module/BackupLib/BackupType.h"

/// Knows what a backup type is: its folder's name, and the files that it keeps.
///
/// The latter come from Resources/Config/vm_config.ini of the host's bundle, which is read once, by the first
/// call: a section for each type with the keys "domain" and "relativePath". Docs/formats.md ("vm_config.ini")
/// describes it.
///
/// All functions may be called from any thread.
class KRUTEIN_API CConfigMgr {
 public:
    /// The one object, made by the first call; it lives as long as the process.
    static CConfigMgr* GetInstance();
    CConfigMgr(const CConfigMgr&) = delete;
    CConfigMgr& operator=(const CConfigMgr&) = delete;

    /// True for the two whole-device types.
    bool IsFullBackup(int type);

    /// The name of the folder that backups of a type lie in, "Velmora_WhatsApp_SMS_Backup"; "UNKNOWN_1" for a
    /// type without any known bit.
    std::string GetForderNameFromBackupType(int type);

    /// Creates a folder for a new backup, named for its type and the local time of now:
    /// root/Velmora_SMS_Backup/2024_03_05__07_08_09. Two of the same type and second are the same.
    /// \param root  UTF-8; "" for VelMora_backup_cache in the home folder ($HOME, which must be set then).
    /// \return the path, whether it could be created or not.
    std::string GenerateBackupDir(int type, std::string root);

    /// Appends the configured domains and relative paths of some sections, in lower case.
    /// \return true when one of the lists has an entry afterwards.
    bool GetAppDomainAndRelativePath(const std::vector<std::string>& sections,
                                     std::vector<std::string>& domains,
                                     std::vector<std::string>& relativePaths);

    /// The query that selects the files of some sections from a Manifest.db; "" when nothing is configured
    /// for them.
    std::string GetSQL(const std::vector<std::string>& sections);

    /// Always true.
    bool IsNeedCopyDirWhenFullRestore();

 private:
    friend KRUTEIN_API CIniObj* global_getVmConfig();

    CConfigMgr();

    bool m_needCopyDir = true;
    CIniObj m_config;
};

/// The configuration file, for further keys that a host keeps in it. It is used by one thread at a time and
/// stays the library's.
KRUTEIN_API CIniObj* global_getVmConfig();
