#pragma once

#include <gtest/gtest.h>

#include <condition_variable>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <nlohmann/json.hpp>
#include <string>
#include <thread>
#include <vector>

#include "Module/BackupLib/PipeMessage.h"
#include "Tests/support/ChildProcess.h"
#include "Tests/support/TemporaryFolder.h"

/// A message of the tool. The payload is without its final zero byte, which was there.
struct ToolMessage {
    unsigned type = 0;
    int first = 0;
    int second = 0;
    std::string text;
};

/// The sample backup tool while it runs, with a pipe to write its messages to.
class RunningTool {
 public:
    struct Options {
        /// For the command; "PIPE" in it stands for the descriptor.
        std::string argument;
        std::map<std::string, std::string> environment;
        std::function<void()> prepare;  ///< called in the child before the program starts
        bool reading = true;            ///< otherwise nobody reads until StartReading
    };

    explicit RunningTool(const Options& options);
    ~RunningTool();
    RunningTool(const RunningTool&) = delete;
    RunningTool& operator=(const RunningTool&) = delete;

    void StartReading();
    /// Waits until the tool has filled a pipe that nobody reads.
    void AwaitFullPipe() const;
    /// Closes the reading end of a pipe that nobody reads.
    void Abandon();
    /// Waits until there are so many messages, or no more are to come.
    void AwaitMessages(std::size_t count);
    void Signal(int number) const { m_process->Signal(number); }

    /// Waits for its end. \return as ChildProcess::Wait.
    int Wait();
    std::vector<ToolMessage> Messages();
    std::string Errors() { return m_process->Errors(); }

 private:
    bool ReadMessage(ToolMessage& message) const;
    void ReadMessages();

    int m_readEnd = -1;
    std::unique_ptr<ChildProcess> m_process;
    std::thread m_reader;
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::vector<ToolMessage> m_messages;
    bool m_ended = false;
};

/// What a run left behind.
struct ToolRun {
    int code = -1;  ///< of the process
    std::vector<ToolMessage> messages;
    std::string errors;

    bool HasExitMessage() const { return !messages.empty() && messages.back().type == krutein::kPipeExit; }
    std::vector<ToolMessage> Progress() const;
};

/// A normal end with this code: the exit message is the last one and says the same as the process, and
/// standard error has one line exactly when something went wrong.
testing::AssertionResult EndedWith(const ToolRun& run, int code);

/// A kind of sample device. Its version decides how its backups are laid out.
struct Phone {
    const char* name;  ///< in the names of tests
    const char* systemVersion;
    const char* catalogue;  ///< the file's name
    bool isFlat;            ///< all files lie directly in the backup's folder
};
constexpr Phone kNewPhone{"Version17", "17.4.1", "Manifest.db", false};
constexpr Phone kOldPhone{"Version9", "9.3.5", "Manifest.mbdb", true};

/// Devices, folders for their backups and their state, all in a temporary folder.
class ArchiverTest : public testing::Test {
 protected:
    static constexpr char kUdid[] = "00008110-000A1B2C3D4E5F60";

    explicit ArchiverTest(const Phone& phone = kNewPhone);

    /// A small device with some of everything.
    nlohmann::json Description() const;
    void Connect(const nlohmann::json& description) const;
    void Disconnect(const std::string& udid) const;

    /// \param argument  as for RunningTool::Options.
    std::unique_ptr<RunningTool> Start(const std::string& argument, bool reading = true) const;
    ToolRun Run(const std::string& argument) const;

    // The command lines of the library.
    std::string BackupCommand(const std::string& folder = "") const;
    std::string RestoreCommand() const;
    std::string InfoCommand() const;
    std::string RestoreSettingsCommand() const;
    static std::string PasswordCommand(const std::string& before, const std::string& after);

    ToolRun BackUp() const { return Run(BackupCommand()); }

    /// A path below the temporary folder.
    std::string Path(const std::string& name) const { return m_folder.Path(name); }
    std::string BackupPath(const std::string& name = "") const;
    /// The path of the backup's catalogue.
    std::string CataloguePath() const { return BackupPath(m_phone.catalogue); }

    /// Where a file lies below the backup.
    std::string PlaceOf(const std::string& fileId) const;
    std::string PlaceOf(const std::string& domain, const std::string& path) const;

    Phone m_phone;
    TemporaryFolder m_folder;
    std::map<std::string, std::string> m_environment;  ///< for the tool
    std::function<void()> m_prepare;                   ///< called in the child before the tool starts
};

/// What backups of both layouts have in common.
class BothPhonesTest : public ArchiverTest, public testing::WithParamInterface<Phone> {
 protected:
    BothPhonesTest() : ArchiverTest(GetParam()) {}
};

/// Shows a phone by its name.
void PrintTo(const Phone& phone, std::ostream* out);
inline auto BothPhones() {
    return testing::Values(kNewPhone, kOldPhone);
}
