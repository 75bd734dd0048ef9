// On macOS one folder answers to several names, Backup and BACKUP, and realpath leaves them as they are. Here
// a link stands for the second name, and the function below stands in front of the system's own one.

// The headers' checked functions are inline: Clang refuses a second one of such a name.
#undef _FORTIFY_SOURCE

#include <gtest/gtest.h>
#include <unistd.h>

#include <atomic>
#include <cstdlib>
#include <cstring>
#include <filesystem>

#include "Common/Export.h"
#include "Common/std/std_objc.h"
#include "Tests/support/Interpose.h"
#include "Tests/support/TemporaryFolder.h"

namespace fs = std::filesystem;

namespace {

std::atomic<bool> g_namesAreLeftAlone{false};

}  // namespace

extern "C" KRUTEIN_API char* realpath(const char* path, char* resolved) noexcept {
    static const auto real = RealFunction<char*(const char*, char*)>("realpath");
    return g_namesAreLeftAlone ? strdup(path) : real(path, resolved);
}

TEST(FileCopy, NeverRemovesItsOwnSourceUnderAnotherName) {
    const TemporaryFolder folder;
    folder.Write("a/b", "kept");
    fs::create_symlink("a", folder.Path("A"));
    g_namesAreLeftAlone = true;
    const bool around = STD_OBJC_FILE_CopyFile(folder.Path("a/b").c_str(), folder.Path("A").c_str());
    const bool same = STD_OBJC_FILE_CopyFile(folder.Path("a/b").c_str(), folder.Path("A/b").c_str());
    g_namesAreLeftAlone = false;
    EXPECT_FALSE(around);
    EXPECT_FALSE(same);
    EXPECT_TRUE(fs::is_symlink(folder.Path("A")));
    EXPECT_EQ(folder.Read("a/b"), "kept");
}

TEST(FileCopy, AnotherNameOfTheFileIsReplaced) {
    const TemporaryFolder folder;
    folder.Write("a", "kept");
    fs::create_hard_link(folder.Path("a"), folder.Path("b"));
    EXPECT_TRUE(STD_OBJC_FILE_CopyFile(folder.Path("a").c_str(), folder.Path("b").c_str()));
    EXPECT_EQ(folder.Read("b"), "kept");
    EXPECT_EQ(fs::hard_link_count(folder.Path("a")), 1U);
}
