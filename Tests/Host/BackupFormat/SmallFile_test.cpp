#include "Host/BackupFormat/SmallFile.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>

#include "Tests/support/TemporaryFolder.h"

using krutein::ReadSmallFile;

TEST(SmallFile, IsReadWhole) {
    const TemporaryFolder folder;
    const std::string content = std::string(100'000, 'x') + '\0' + "end";
    EXPECT_EQ(ReadSmallFile(folder.Write("file", content), content.size()), content);
}

TEST(SmallFile, AnythingElseIsNotRead) {
    const TemporaryFolder folder;
    const std::string file = folder.Write("file", "content");
    std::filesystem::create_symlink(file, folder.Path("link"));
    ASSERT_EQ(mkfifo(folder.Path("pipe").c_str(), 0600), 0);
    EXPECT_EQ(ReadSmallFile(file, 6), "") << "too large";
    EXPECT_EQ(ReadSmallFile(folder.Path("link"), 100), "");
    EXPECT_EQ(ReadSmallFile(folder.Path("pipe"), 100), "");
    EXPECT_EQ(ReadSmallFile(folder.Path(), 100), "");
    EXPECT_EQ(ReadSmallFile(folder.Path("none"), 100), "");
}
