#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "Common/std/std_objc.h"
#include "Module/BackupLib/MobileBackupTask.h"

namespace fs = std::filesystem;

TEST(RunnerWithoutTool, IsARunWithoutExitMessage) {
    CMobileBackupTask missing;
    EXPECT_EQ(missing.StartFullBackup("/b", "d", nullptr, nullptr), 107);

    const fs::path contents = fs::path(STD_OBJC_GetCurrentAppPath()).parent_path().parent_path();
    fs::create_directories(contents / "Frameworks");
    std::ofstream(contents / "Frameworks/HandsetArchiver") << "no program";
    CMobileBackupTask noProgram;
    const int code = noProgram.StartFullBackup("/b", "d", nullptr, nullptr);
    fs::remove_all(contents / "Frameworks");
    EXPECT_EQ(code, 107);
}
