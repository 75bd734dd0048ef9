// What Docs/hosting.md says is so: its host is run with the sample backup tool.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>

#include "Tests/Host/kruteinctl/HostBundle.h"

using testing::EndsWith;
using testing::HasSubstr;

namespace fs = std::filesystem;

namespace {

class Hosting : public testing::Test {
 protected:
    Hosting() {
        bundle.HasDeviceWith(
            R"({"photos": {"count": 20, "bytesEach": 1000}, "messages": {"chats": 2, "count": 5, "attachments": 1, "attachmentBytes": 100}})");
        fs::copy_file(HOSTING_PROGRAM, bundle.Folder().Path("Krutein.app/Contents/MacOS/host"));
        fs::create_directories(bundle.Backups());
    }

    /// The host of the document, in a bundle with the sample tool.
    Command Host(const std::string& operation, const std::string& folder) const {
        Command command = bundle.Kruteinctl({operation, HostBundle::kUdid, folder});
        command.words.front() = bundle.Folder().Path("Krutein.app/Contents/MacOS/host");
        return command;
    }

    HostBundle bundle;
};

}  // namespace

TEST_F(Hosting, ItsHostBacksUpAndRestores) {
    const Finished backup = RunToEnd(Host("backup", bundle.Backups()));
    EXPECT_EQ(backup.code, 0) << backup.errors;
    EXPECT_THAT(backup.output, HasSubstr("made " + bundle.Backups() + "/" + HostBundle::kUdid + "\n"));
    EXPECT_TRUE(fs::exists(bundle.Backups() + "/" + HostBundle::kUdid + "/Manifest.db"));
    const Finished restore = RunToEnd(Host("restore", bundle.Backups()));
    EXPECT_EQ(restore.code, 0) << restore.errors;
    EXPECT_THAT(restore.output, HasSubstr(" of "));
}

TEST_F(Hosting, ItsHostKeepsMessages) {
    const Finished messages = RunToEnd(Host("messages", bundle.Backups()));
    EXPECT_EQ(messages.code, 0) << messages.errors;
    EXPECT_THAT(bundle.BackupNames(), testing::ElementsAre("Velmora_SMS_Backup"));
}

TEST_F(Hosting, ItsHostSaysWithWhichCodeItFailed) {
    bundle.HasNoTool();
    const Finished backup = RunToEnd(Host("backup", bundle.Backups()));
    EXPECT_EQ(backup.code, 1);
    EXPECT_THAT(backup.errors, EndsWith("failed with code 107\n"));
}

TEST_F(Hosting, ItsHostStopsAtCtrlC) {
    for (const char* const operation : {"backup", "messages"}) {
        Command command = Host(operation, bundle.Backups());
        command.environment["KRUTEIN_SAMPLE_FILES_PER_SECOND"] = "2";
        ChildProcess host(command);
        ASSERT_TRUE(host.AwaitOutput(" of ")) << operation;
        host.Signal(SIGINT);
        EXPECT_EQ(host.Wait(), 1);
        EXPECT_THAT(host.Output(), HasSubstr("stopped\n")) << operation;
        EXPECT_FALSE(ToolRuns());
    }
}

TEST_F(Hosting, ItsHostRefusesWhatTheShellWouldInterpret) {
    for (const char* const folder : {"", "a\"b", "a`b", "a$b", "a\\b", "a|b", "a\nb", "a\rb"}) {
        EXPECT_EQ(RunToEnd(Host("backup", folder)).code, 2) << folder;
    }
    EXPECT_EQ(RunToEnd(Host("backup", std::string(1025, 'a'))).code, 2);
}
