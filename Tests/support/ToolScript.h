#pragma once

#include <cstdlib>
#include <map>
#include <string>

#include "Tests/support/TemporaryFolder.h"

/// What the backup tool does in the next runs: tool.Progress(1, 2, "IMG_0001.JPG").ExitMessage(0).
/// The steps are those of Tests/support/ScriptedTool.cpp.
class ToolScript {
 public:
    ToolScript() {
        Save();
        setenv("KRUTEIN_TOOL_SCRIPT", m_folder.Path("script").c_str(), 1);
    }
    ~ToolScript() { unsetenv("KRUTEIN_TOOL_SCRIPT"); }
    ToolScript(const ToolScript&) = delete;
    ToolScript& operator=(const ToolScript&) = delete;

    /// The steps from here on are for the runs for this device alone, which then do nothing else.
    ToolScript& For(const std::string& device) {
        m_file = "script." + device;
        return *this;
    }

    /// Adds a step as it stands.
    ToolScript& Step(const std::string& step) {
        m_steps[m_file] += step + "\n";
        Save();
        return *this;
    }

    /// A progress message whose payload is the text with its NUL; none for an empty text.
    ToolScript& Progress(int arg1, int arg2, const std::string& text = "") {
        return Step("progress " + std::to_string(arg1) + " " + std::to_string(arg2) + " " + text);
    }
    /// A header alone, whatever it says.
    ToolScript& Header(unsigned type, int arg1, int arg2, int length) {
        return Step("header " + std::to_string(type) + " " + std::to_string(arg1) + " " +
                    std::to_string(arg2) + " " + std::to_string(length));
    }
    /// That many bytes 'x'.
    ToolScript& Fill(int bytes) { return Step("fill " + std::to_string(bytes)); }
    /// Progress messages 1 to count without payload.
    ToolScript& Many(int count) { return Step("many " + std::to_string(count)); }
    ToolScript& ExitMessage(int code) { return Step("exit-message " + std::to_string(code)); }
    ToolScript& Sleep(int milliseconds) { return Step("sleep " + std::to_string(milliseconds)); }
    /// Waits until the test has made the file.
    ToolScript& Await(const std::string& file) { return Step("await-file " + m_folder.Path(file)); }
    /// Leaves a process behind that holds the pipe, or floods it, for that long.
    ToolScript& Linger(int milliseconds) { return Step("linger " + std::to_string(milliseconds)); }
    ToolScript& LingerFlooding(int milliseconds) {
        return Step("linger-flood " + std::to_string(milliseconds));
    }
    /// Keeps the command line's argument for Argument().
    ToolScript& KeepArgument() { return Step("write-argument " + m_folder.Path("argument")); }
    /// Keeps the descriptors above standard error for Descriptors().
    ToolScript& KeepDescriptors() { return Step("list-descriptors " + m_folder.Path("descriptors")); }
    /// Makes -backuppath/-target with a manifest, and something beside it.
    ToolScript& MakeBackup() { return Step("make-backup"); }
    /// Makes -backuppath/-target a copy of a folder.
    ToolScript& CopyBackup(const std::string& folder) { return Step("copy-backup " + folder); }
    /// Runs a command in which $JOB is -backuppath and $BACKUP the device's folder in it.
    ToolScript& Shell(const std::string& command) { return Step("sh " + command); }
    ToolScript& End(int status) { return Step("end " + std::to_string(status)); }

    void Make(const std::string& file) const { m_folder.Write(file); }
    std::string Argument() const { return m_folder.Read("argument"); }
    std::string Descriptors() const { return m_folder.Read("descriptors"); }

 private:
    void Save() { m_folder.Write(m_file, m_steps[m_file]); }

    TemporaryFolder m_folder;
    std::string m_file = "script";
    std::map<std::string, std::string> m_steps;  ///< by file
};
