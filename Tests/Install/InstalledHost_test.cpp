// kruteinctl as it was installed: through the link in bin/, with the bundle that it finds from there.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "Common/Version.h"
#include "Tests/support/ChildProcess.h"
#include "Tests/support/TemporaryFolder.h"

using testing::HasSubstr;

namespace fs = std::filesystem;

namespace {

/// The sample phone with the smaller backup.
constexpr char kUdid[] = "5d41f0a9c2b7e63814d09a5be7c3f2168a90d4e1";

class InstalledHost : public testing::Test {
 protected:
    Finished Kruteinctl(std::vector<std::string> words) const {
        words.insert(words.begin(), INSTALLED_BIN "/kruteinctl");
        Command command(words);
        command.environment = {{"KRUTEIN_LOG_DIR", folder.Path("logs")},
                               {"KRUTEIN_SAMPLE_STATE", folder.Path("state")}};
        return RunToEnd(command);
    }

    TemporaryFolder folder;
};

}  // namespace

TEST_F(InstalledHost, IsALinkIntoTheBundle) {
    EXPECT_TRUE(fs::is_symlink(INSTALLED_BIN "/kruteinctl"));
    EXPECT_TRUE(fs::read_symlink(INSTALLED_BIN "/kruteinctl").is_relative());
    EXPECT_EQ(Kruteinctl({"--version"}).output, "kruteinctl " KRUTEIN_VERSION "\n");
}

TEST_F(InstalledHost, FindsToolDevicesAndConfiguration) {
    const std::string typed = folder.Path("typed");
    const Finished backup = Kruteinctl({"backup", kUdid, "--types", "messages,whatsapp", "--to", typed});
    ASSERT_EQ(backup.code, 0) << backup.output << backup.errors;
    const Finished list = Kruteinctl({"list", typed});
    EXPECT_EQ(list.code, 0);
    EXPECT_THAT(list.output, HasSubstr("messages, whatsapp"));
    EXPECT_THAT(list.output, HasSubstr("backups: 1,"));
}
