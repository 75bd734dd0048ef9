// A bundle without a configuration.

#include <gtest/gtest.h>

#include <filesystem>

#include "Common/std/std_path.h"
#include "Module/BackupLib/BackupMgr.h"
#include "Module/BackupLib/ConfigMgr.h"
#include "Tests/Module/BackupLib/JobFixture.h"
#include "Tests/support/LogRecorder.h"

namespace fs = std::filesystem;

TEST(MissingConfiguration, IsCreatedEmptyAndSelectsNothing) {
    const fs::path config =
        fs::path(STD_PATH_GetExeDirA()).parent_path().parent_path() / "Resources/Config/vm_config.ini";
    fs::create_directories(config.parent_path());
    fs::remove(config);
    EXPECT_EQ(CConfigMgr::GetInstance()->GetSQL({"backup_SMS"}), "");
    EXPECT_EQ(ReadWholeFile(config.string()), "");
}

class MissingConfigurationTest : public JobTest {};

TEST_F(MissingConfigurationTest, ATypedJobIs1023Or1024) {
    tool.MakeBackup().ExitMessage(0);
    EXPECT_EQ(Start(8), 1023);
    EXPECT_EQ(RecordedTexts().back(), "[Backup] end ret = 1023 ");
    std::filesystem::remove_all(fs::path(JobFolder()).parent_path());
    device.majorVersion = 9;
    EXPECT_EQ(Start(8), 1024);
    EXPECT_TRUE(fs::exists(DeviceFolder() + "/Manifest.db")) << "nothing was deleted";
}
