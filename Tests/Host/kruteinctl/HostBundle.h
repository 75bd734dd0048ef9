#pragma once

#include <map>
#include <string>
#include <vector>

#include "Tests/support/ChildProcess.h"
#include "Tests/support/TemporaryFolder.h"

/// A bundle of the reference host for one test: a copy of the program with a tool of the test's choice,
/// sample devices that the test describes, and a folder for backups.
class HostBundle {
 public:
    static constexpr const char* kConfiguration = "Krutein.app/Resources/Config/vm_config.ini";
    static constexpr const char* kUdid = "00008110-00000000000000AA";

    /// With the sample backup tool.
    HostBundle();

    /// Describes the sample device kUdid with so many photos.
    void HasDevice(long long photos, long long bytesEach = 1000);
    /// Describes the sample device kUdid with these contents, in the terms of its description.
    void HasDeviceWith(const std::string& contents, const std::string& systemVersion = "17.4.1");
    /// Replaces what the types of backups keep.
    void HasConfiguration(const std::string& ini) { m_folder.Write(kConfiguration, ini); }
    /// Puts a tool that follows the test's script in the sample tool's place.
    void HasScriptedTool();
    void HasNoTool();

    /// "kruteinctl" and the words, ready to be changed further.
    Command Kruteinctl(const std::vector<std::string>& words) const;
    Finished Run(const std::vector<std::string>& words) const { return RunToEnd(Kruteinctl(words)); }

    Command Backup(const std::vector<std::string>& more = {}) const;

    /// The folder that backups go to.
    std::string Backups() const { return m_folder.Path("backups"); }
    /// What lies in it, sorted.
    std::vector<std::string> BackupNames() const;

    const TemporaryFolder& Folder() const { return m_folder; }
    std::string ToolPath() const { return m_folder.Path("Krutein.app/Contents/Frameworks/HandsetArchiver"); }

 private:
    TemporaryFolder m_folder;
};

/// Whether a backup tool of any bundle runs.
bool ToolRuns();
