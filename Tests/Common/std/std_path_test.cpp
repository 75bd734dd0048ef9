#include "Common/std/std_path.h"

#include <gtest/gtest.h>

#include "Common/std/std_objc.h"
#include "Tests/support/TemporaryFolder.h"

namespace {

/// Runs a function that changes its argument in place.
template <typename Text>
Text After(void (*change)(Text&), Text text) {
    change(text);
    return text;
}

std::string Up(const std::string& path) {
    std::string parent = "untouched";
    return STD_PATH_GetUpFolderA(path, parent) ? parent : "none, " + parent;
}

}  // namespace

TEST(PathFormat, TurnsBackslashesAndDoubledSlashes) {
    EXPECT_EQ(After<std::string>(STD_PATH_FormatA, "C:\\dir\\file"), "C:/dir/file");
    EXPECT_EQ(After<std::string>(STD_PATH_FormatA, "/a//b"), "/a/b");
    EXPECT_EQ(After<std::string>(STD_PATH_FormatA, ""), "");
    EXPECT_EQ(After<std::string>(STD_PATH_FormatA, "a\\\\b"), "a/b");
    EXPECT_EQ(After<std::wstring>(STD_PATH_FormatW, L"C:\\dir\\\\file"), L"C:/dir/file");
}

TEST(PathFormat, ReplacesDoubledSlashesInOnePass) {
    EXPECT_EQ(After<std::string>(STD_PATH_FormatA, "///"), "//");
    EXPECT_EQ(After<std::string>(STD_PATH_FormatA, "////"), "//");
}

TEST(PathFormat, LeavesEverythingElse) {
    for (const char* path : {".", "..", "a/../b/./c", "a/", "/", "a"}) {
        EXPECT_EQ(After<std::string>(STD_PATH_FormatA, path), path);
    }
}

TEST(PathExist, NormalisesFirst) {
    const TemporaryFolder folder;
    folder.Write("a/b");
    EXPECT_TRUE(STD_PATH_ExistA(folder.Path()));
    EXPECT_TRUE(STD_PATH_ExistA(folder.Path() + "\\a\\b"));
    EXPECT_FALSE(STD_PATH_ExistA(folder.Path("c")));
    EXPECT_FALSE(STD_PATH_ExistA(folder.Path("a/b/c")));
    EXPECT_FALSE(STD_PATH_ExistA(""));
}

TEST(PathExist, WideFormIsAlwaysFalse) {
    EXPECT_FALSE(STD_PATH_ExistW(L"/"));
}

TEST(AddSlash, AppendsOneUnlessItIsThere) {
    EXPECT_EQ(After<std::string>(STD_PATH_AddSlashA, "/Users/x"), "/Users/x/");
    EXPECT_EQ(After<std::string>(STD_PATH_AddSlashA, "/Users/x/"), "/Users/x/");
    EXPECT_EQ(After<std::string>(STD_PATH_AddSlashA, "a\\b"), "a/b/");
    EXPECT_EQ(After<std::wstring>(STD_PATH_AddSlashW, L"/Users/x"), L"/Users/x/");
}

TEST(AddSlash, LeavesPathsOfOneCharacter) {
    for (const char* path : {"", "/", "a"})
        EXPECT_EQ(After<std::string>(STD_PATH_AddSlashA, path), path);
    EXPECT_EQ(After<std::string>(STD_PATH_AddSlashA, "\\\\"), "/");
}

TEST(RemoveSlash, RemovesOneFromTheEnd) {
    EXPECT_EQ(After<std::string>(STD_PATH_RemoveSlashA, "/a/b/"), "/a/b");
    EXPECT_EQ(After<std::string>(STD_PATH_RemoveSlashA, "/a/b"), "/a/b");
    EXPECT_EQ(After<std::string>(STD_PATH_RemoveSlashA, "\\a\\b\\"), "/a/b");
    EXPECT_EQ(After<std::string>(STD_PATH_RemoveSlashA, "/"), "/");
    EXPECT_EQ(After<std::string>(STD_PATH_RemoveSlashA, ""), "");
    EXPECT_EQ(After<std::wstring>(STD_PATH_RemoveSlashW, L"/a/b/"), L"/a/b");
}

TEST(UpFolder, IsTheTextBeforeTheLastSlash) {
    EXPECT_EQ(Up("/a/b/c"), "/a/b");
    EXPECT_EQ(Up("/a/b/"), "/a/b");
    EXPECT_EQ(Up("/a"), "");
    EXPECT_EQ(Up("a\\b"), "a");
    std::wstring parent;
    EXPECT_TRUE(STD_PATH_GetUpFolderW(L"/a/b", parent));
    EXPECT_EQ(parent, L"/a");
}

TEST(UpFolder, FailsWithoutASlashAndLeavesTheResult) {
    EXPECT_EQ(Up("a"), "none, untouched");
    EXPECT_EQ(Up(""), "none, untouched");
    std::wstring parent = L"untouched";
    EXPECT_FALSE(STD_PATH_GetUpFolderW(L"a", parent));
    EXPECT_EQ(parent, L"untouched");
}

TEST(GetName, IsTheTextAfterTheLastSlash) {
    EXPECT_EQ(STD_PATH_GetNameA("/x/y/file.tar.gz", true), "file.tar.gz");
    EXPECT_EQ(STD_PATH_GetNameA("\\x\\y.db", true), "y.db");
    EXPECT_EQ(STD_PATH_GetNameW(L"/x/y.db", true), L"y.db");
}

TEST(GetName, CutsAtTheFirstDotWithoutExtension) {
    EXPECT_EQ(STD_PATH_GetNameA("/x/y/file.tar.gz", false), "file");
    EXPECT_EQ(STD_PATH_GetNameA("/x/.hidden", false), "");
    EXPECT_EQ(STD_PATH_GetNameA("/x/name", false), "name");
    EXPECT_EQ(STD_PATH_GetNameW(L"/x/a.b.c", false), L"a");
}

TEST(GetName, IsEmptyForAFolderPathAndForABareName) {
    for (const bool withExtension : {true, false}) {
        EXPECT_EQ(STD_PATH_GetNameA("/x/y/", withExtension), "");
        EXPECT_EQ(STD_PATH_GetNameA("file.txt", withExtension), "");
    }
}

TEST(ExeDir, IsTheFolderOfThisProgram) {
    const std::string folder = STD_PATH_GetExeDirA();
    EXPECT_EQ(folder + "/" + STD_PATH_GetNameA(STD_OBJC_GetCurrentAppPath(), true),
              STD_OBJC_GetCurrentAppPath());
    EXPECT_NE(folder.back(), '/');
    EXPECT_EQ(STD_PATH_GetExeDirW(), L"");
}

TEST(Separator, IsASlash) {
    EXPECT_STREQ(STD_PATH_GetDefaultSeparatorA(), "/");
    EXPECT_STREQ(STD_PATH_GetDefaultSeparatorW(), L"/");
}

TEST(InitConfigFile, GivesThePathBackUnchanged) {
    EXPECT_EQ(STD_PATH_InitConfigFileA("a\\b//c"), "a\\b//c");
    EXPECT_EQ(STD_PATH_InitConfigFileW(L"a\\b//c"), L"a\\b//c");
}

TEST(Drives, AreNotKnownHere) {
    std::vector<std::string> drives{"kept"};
    std::vector<std::wstring> wideDrives{L"kept"};
    EXPECT_EQ(STD_PATH_GetAllDriverPathA(drives), 0);
    EXPECT_EQ(STD_PATH_GetAllDriverPathW(wideDrives), 0);
    EXPECT_EQ(drives.front(), "kept");
    EXPECT_EQ(wideDrives.front(), L"kept");
    EXPECT_EQ(STD_PATH_GetDriverByteSizeA("/"), 0U);
    EXPECT_EQ(STD_PATH_GetDriverByteSizeW(L"/"), 0U);
    std::string drive = "kept";
    std::wstring wideDrive = L"kept";
    EXPECT_EQ(STD_PATH_GetMaximumFreeSpaceDiskA(drive), 0U);
    EXPECT_EQ(STD_PATH_GetMaximumFreeSpaceDiskW(wideDrive), 0U);
    EXPECT_EQ(drive, "kept");
    EXPECT_EQ(wideDrive, L"kept");
}

TEST(Drives, SplitWritesNothing) {
    char narrow[4][4] = {"abc", "abc", "abc", "abc"};
    wchar_t wide[4][4] = {L"abc", L"abc", L"abc", L"abc"};
    STD_PATH_SplitA("/a/b.c", narrow[0], narrow[1], narrow[2], narrow[3]);
    STD_PATH_SplitW(L"/a/b.c", wide[0], wide[1], wide[2], wide[3]);
    for (int i = 0; i < 4; ++i) {
        EXPECT_STREQ(narrow[i], "abc");
        EXPECT_STREQ(wide[i], L"abc");
    }
}
