#include "Common/std/std_file.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>

#include "Common/std/std_path.h"
#include "Tests/support/ResourceCount.h"
#include "Tests/support/TemporaryFolder.h"

using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

namespace fs = std::filesystem;

namespace {

struct Listing {
    std::vector<std::string> files;
    std::vector<std::string> dirs;
    long long total = 0;
    bool result = false;

    void Add(const std::string& dir, bool recursive) {
        result = STD_FILE_GetDirInfoA(dir, files, dirs, total, recursive);
    }
};

Listing List(const std::string& dir, bool recursive = true) {
    Listing listing;
    listing.Add(dir, recursive);
    return listing;
}

struct ReadResult {
    std::unique_ptr<char, void (*)(void*)> buffer{nullptr, std::free};
    int size = -5;
};

ReadResult ReadBuffer(const std::string& path) {
    ReadResult result;
    result.buffer.reset(STD_FILE_ReadBufA(path, &result.size));
    return result;
}

/// A file of this length that takes no room.
std::string SparseFile(const TemporaryFolder& folder, std::uintmax_t bytes) {
    std::string path = folder.Write("sparse");
    fs::resize_file(path, bytes);
    return path;
}

constexpr std::uintmax_t kGiB = 1024ULL * 1024 * 1024;

}  // namespace

TEST(FileOpen, UsesThePathAsGiven) {
    const TemporaryFolder folder;
    const std::string odd = folder.Path("a\\b");
    FILE* file = STD_FILE_OpenA(odd, "w");
    ASSERT_NE(file, nullptr);
    std::fclose(file);
    EXPECT_TRUE(fs::exists(odd));
    EXPECT_EQ(STD_FILE_OpenA(folder.Path("none"), "r"), nullptr);
    EXPECT_EQ(STD_FILE_OpenW(L"/tmp", L"r"), nullptr);
}

TEST(EnsureDir, CreatesTheFolderAndItsParents) {
    const TemporaryFolder folder;
    const mode_t mask = umask(0);
    EXPECT_TRUE(STD_FILE_EnsureDirExistA(folder.Path("a/b/c/")));
    umask(mask);
    for (const char* made : {"a", "a/b", "a/b/c"}) {
        struct stat info {};
        ASSERT_EQ(stat(folder.Path(made).c_str(), &info), 0) << made;
        EXPECT_EQ(info.st_mode & 07777U, 0755U) << made;
    }
}

TEST(EnsureDir, AcceptsWhatIsThere) {
    const TemporaryFolder folder;
    EXPECT_TRUE(STD_FILE_EnsureDirExistA(folder.Path()));
    EXPECT_TRUE(STD_FILE_EnsureDirExistA(folder.Path() + "\\x\\y"));
    EXPECT_TRUE(STD_PATH_ExistA(folder.Path("x/y")));
}

TEST(EnsureDir, FailsForTheEmptyPathAndBelowAFile) {
    const TemporaryFolder folder;
    folder.Write("file");
    EXPECT_FALSE(STD_FILE_EnsureDirExistA(""));
    EXPECT_FALSE(STD_FILE_EnsureDirExistA(folder.Path("file/a/b")));
    EXPECT_FALSE(STD_FILE_EnsureDirExistW(L"/tmp"));
    EXPECT_FALSE(STD_FILE_EnsureDirExistW(L""));
}

TEST(FileSize, IsThatOfTheFile) {
    const TemporaryFolder folder;
    const std::string path = folder.Write("a", "12345");
    EXPECT_EQ(STD_FILE_GetFileSizeA(path), 5U);
    EXPECT_EQ(STD_FILE_CalcSizeA(path), 5U);
    EXPECT_EQ(STD_FILE_GetFileSizeA(folder.Path("none")), 0U);
    EXPECT_EQ(STD_FILE_CalcSizeA(folder.Path("none")), 0U);
    EXPECT_EQ(STD_FILE_GetFileSizeA(folder.Path()), 0U) << "a folder has no size";
    EXPECT_EQ(STD_FILE_GetFileSizeW(L"a"), 0U);
    EXPECT_EQ(STD_FILE_CalcSizeW(L"a"), 0U);
}

TEST(FileSize, OnlyCalcSizeNormalisesThePath) {
    const TemporaryFolder folder;
    folder.Write("a/b", "12345");
    const std::string path = folder.Path() + "/a\\b";
    EXPECT_EQ(STD_FILE_GetFileSizeA(path), 0U);
    EXPECT_EQ(STD_FILE_CalcSizeA(path), 5U);
}

TEST(FileSize, WrapsAt4GiB) {
    const TemporaryFolder folder;
    const std::string path = SparseFile(folder, 5 * kGiB);
    EXPECT_EQ(STD_FILE_GetFileSizeA(path), kGiB);
    EXPECT_EQ(STD_FILE_CalcSizeA(path), kGiB);
}

TEST(DirInfo, ListsATreeWithFoldersBeforeTheirContents) {
    const TemporaryFolder folder;
    folder.Write("a/b/deep", "123");
    folder.Write("top", "12");
    const Listing listing = List(folder.Path() + "/");
    EXPECT_TRUE(listing.result);
    EXPECT_THAT(listing.files, UnorderedElementsAre(folder.Path("a/b/deep"), folder.Path("top")));
    EXPECT_THAT(listing.dirs, ElementsAre(folder.Path("a"), folder.Path("a/b")));
    EXPECT_EQ(listing.total, 5);
}

TEST(DirInfo, StaysInTheFolderWhenNotRecursive) {
    const TemporaryFolder folder;
    folder.Write("a/deep", "123");
    folder.Write("top", "12");
    const Listing listing = List(folder.Path(), false);
    EXPECT_THAT(listing.files, ElementsAre(folder.Path("top")));
    EXPECT_THAT(listing.dirs, ElementsAre(folder.Path("a")));
    EXPECT_EQ(listing.total, 2);
}

TEST(DirInfo, AddsToWhatWasThere) {
    const TemporaryFolder folder;
    folder.Write("a/file", "123");
    Listing listing = List(folder.Path());
    listing.Add(folder.Path(), true);
    EXPECT_EQ(listing.files.size(), 2U);
    EXPECT_EQ(listing.dirs.size(), 2U);
    EXPECT_EQ(listing.total, 6);
}

TEST(DirInfo, TakesALinkToAFolderForAFile) {
    const TemporaryFolder folder;
    const TemporaryFolder elsewhere;
    elsewhere.Write("secret", "1234567890");
    fs::create_directory_symlink(elsewhere.Path(), folder.Path("link"));
    const Listing listing = List(folder.Path());
    EXPECT_THAT(listing.files, ElementsAre(folder.Path("link")));
    EXPECT_THAT(listing.dirs, IsEmpty());
    EXPECT_EQ(listing.total, static_cast<long long>(elsewhere.Path().size())) << "the link's own size";
}

TEST(DirInfo, TakesASocketForAFolder) {
    const TemporaryFolder folder;
    const int handle = socket(AF_UNIX, SOCK_STREAM, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::strncpy(address.sun_path, folder.Path("s").c_str(), sizeof address.sun_path - 1);
    ASSERT_EQ(bind(handle, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
    close(handle);
    const Listing listing = List(folder.Path());
    EXPECT_THAT(listing.dirs, ElementsAre(folder.Path("s")));
    EXPECT_THAT(listing.files, IsEmpty());
}

TEST(DirInfo, TakesAPipeForAFileAndDoesNotOpenIt) {
    const TemporaryFolder folder;
    ASSERT_EQ(mkfifo(folder.Path("pipe").c_str(), 0600), 0);
    EXPECT_THAT(List(folder.Path()).files, ElementsAre(folder.Path("pipe")));
}

TEST(DirInfo, FailsForWhatIsNoFolder) {
    const TemporaryFolder folder;
    EXPECT_FALSE(List(folder.Path("none")).result);
    EXPECT_FALSE(List(folder.Write("file")).result);
}

TEST(DirInfo, WalksADeepTreeWithFewDescriptors) {
    const TemporaryFolder folder;
    std::string path = folder.Path();
    const int depth = 300;
    for (int i = 0; i < depth; ++i)
        path += "/d";
    fs::create_directories(path);
    rlimit before{};
    getrlimit(RLIMIT_NOFILE, &before);
    rlimit few = before;
    few.rlim_cur = static_cast<rlim_t>(ResourceCount::Now().descriptors) + 8;
    setrlimit(RLIMIT_NOFILE, &few);
    const Listing listing = List(folder.Path());
    setrlimit(RLIMIT_NOFILE, &before);
    EXPECT_EQ(listing.dirs.size(), static_cast<std::size_t>(depth));
}

TEST(DirInfo, WideFormListsNothing) {
    std::vector<std::wstring> files;
    std::vector<std::wstring> dirs;
    long long total = 0;
    EXPECT_FALSE(STD_FILE_GetDirInfoW(L"/tmp", files, dirs, total, true));
    EXPECT_FALSE(STD_FILE_GetDirFileListW(L"/tmp", files, true));
    EXPECT_THAT(files, IsEmpty());
    EXPECT_THAT(dirs, IsEmpty());
}

TEST(DirSize, IsTheSumOfAllFiles) {
    const TemporaryFolder folder;
    folder.Write("a/b/c", "123");
    folder.Write("d", "12");
    EXPECT_EQ(STD_FILE_GetDirSizeA(folder.Path()), 5);
    EXPECT_EQ(STD_FILE_GetDirSizeA(folder.Path("none")), 0);
    EXPECT_EQ(STD_FILE_GetDirSizeW(L"/tmp"), 0);
}

TEST(DirSize, CountsEachOfManyFilesOnce) {
    const TemporaryFolder folder;
    long long bytes = 0;
    for (int i = 0; i < 3000; ++i) {
        const std::string content(static_cast<std::size_t>(i % 97), 'x');
        folder.Write((i < 1500 ? "flat/" : "folder" + std::to_string(i % 60) + "/") + std::to_string(i),
                     content);
        bytes += i % 97;
    }
    EXPECT_EQ(STD_FILE_GetDirSizeA(folder.Path()), bytes);
}

TEST(DirSize, CountsBeyond4GiB) {
    const TemporaryFolder folder;
    SparseFile(folder, 5 * kGiB);
    EXPECT_EQ(STD_FILE_GetDirSizeA(folder.Path()), static_cast<long long>(5 * kGiB));
}

TEST(DirFileList, GivesTheFilesOnly) {
    const TemporaryFolder folder;
    folder.Write("a/b", "1");
    std::vector<std::string> files{"kept"};
    EXPECT_TRUE(STD_FILE_GetDirFileListA(folder.Path(), files, true));
    EXPECT_THAT(files, ElementsAre("kept", folder.Path("a/b")));
    EXPECT_FALSE(STD_FILE_GetDirFileListA(folder.Path("none"), files, true));
}

TEST(IsDirEmpty, LooksForAnythingAtAll) {
    const TemporaryFolder folder;
    EXPECT_TRUE(STD_FILE_IsDirEmptyA(folder.Path()));
    EXPECT_TRUE(STD_FILE_IsDirEmptyA(folder.Path("none")));
    fs::create_directory(folder.Path("inner"));
    EXPECT_FALSE(STD_FILE_IsDirEmptyA(folder.Path()));
    EXPECT_TRUE(STD_FILE_IsDirEmptyA(folder.Path("inner")));
    folder.Write("inner/file");
    EXPECT_FALSE(STD_FILE_IsDirEmptyA(folder.Path("inner")));
    EXPECT_TRUE(STD_FILE_IsDirEmptyW(L"/"));
}

TEST(ReadBuf, GivesTheContentAndAClosingZero) {
    const TemporaryFolder folder;
    folder.Write("d/abc", "abc");
    const ReadResult read = ReadBuffer(folder.Path() + "\\d\\abc");
    ASSERT_NE(read.buffer, nullptr);
    EXPECT_EQ(read.size, 3);
    EXPECT_EQ(std::memcmp(read.buffer.get(), "abc", 4), 0);
}

TEST(ReadBuf, SizeMayBeLeftOut) {
    const TemporaryFolder folder;
    const std::unique_ptr<char, void (*)(void*)> buffer(STD_FILE_ReadBufA(folder.Write("a", "x"), nullptr),
                                                        std::free);
    EXPECT_STREQ(buffer.get(), "x");
}

TEST(ReadBuf, GivesNothingForEmptyMissingAndUnreadableFiles) {
    const TemporaryFolder folder;
    for (const std::string& path : {folder.Write("empty"), folder.Path("none"), folder.Path()}) {
        const ReadResult read = ReadBuffer(path);
        EXPECT_EQ(read.buffer, nullptr) << path;
        EXPECT_EQ(read.size, -5) << path;
    }
    EXPECT_EQ(STD_FILE_ReadBufW(L"/etc/passwd", nullptr), nullptr);
}

TEST(ReadBuf, RefusesAFileWhoseSizeDoesNotFit) {
    const TemporaryFolder folder;
    EXPECT_EQ(ReadBuffer(SparseFile(folder, 2 * kGiB)).buffer, nullptr);
}

TEST(WriteBuf, CreatesAndReplaces) {
    const TemporaryFolder folder;
    EXPECT_TRUE(STD_FILE_WriteBufA(folder.Path() + "\\a", "12345", 5));
    EXPECT_EQ(folder.Read("a"), "12345");
    EXPECT_TRUE(STD_FILE_WriteBufA(folder.Path("a"), "xyz", 2));
    EXPECT_EQ(folder.Read("a"), "xy");
    EXPECT_TRUE(STD_FILE_WriteBufA(folder.Path("a"), nullptr, 0));
    EXPECT_EQ(folder.Read("a"), "");
}

TEST(WriteBuf, FailsWhereNoFileCanBe) {
    const TemporaryFolder folder;
    EXPECT_FALSE(STD_FILE_WriteBufA(folder.Path("no/such/folder"), "x", 1));
    EXPECT_FALSE(STD_FILE_WriteBufW(L"/tmp/x", "x", 1));
}

TEST(WriteBuf, TouchesNothingForANegativeLength) {
    const TemporaryFolder folder;
    folder.Write("a", "kept");
    EXPECT_FALSE(STD_FILE_WriteBufA(folder.Path("a"), "x", -1));
    EXPECT_EQ(folder.Read("a"), "kept");
}

TEST(DeleteFile, RemovesTheFile) {
    const TemporaryFolder folder;
    folder.Write("d/a");
    EXPECT_TRUE(STD_FILE_DeleteFileA(folder.Path() + "\\d\\a"));
    EXPECT_FALSE(STD_PATH_ExistA(folder.Path("d/a")));
    EXPECT_FALSE(STD_FILE_DeleteFileA(folder.Path("d/a")));
    EXPECT_FALSE(STD_FILE_DeleteFileW(L"/tmp/none"));
}

TEST(CopyFile, CopiesTheBytesWhateverTheFlagSays) {
    const TemporaryFolder folder;
    const std::string content(10000, 'q');
    folder.Write("from", content);
    folder.Write("to", "older and longer than nothing");
    EXPECT_TRUE(STD_FILE_CopyFileA(folder.Path("from"), folder.Path("to"), false));
    EXPECT_EQ(folder.Read("to"), content);
}

TEST(CopyFile, OfAMissingSourceLeavesAnEmptyFile) {
    const TemporaryFolder folder;
    folder.Write("to", "older");
    EXPECT_TRUE(STD_FILE_CopyFileA(folder.Path("none"), folder.Path("to"), false));
    EXPECT_EQ(folder.Read("to"), "");
    EXPECT_TRUE(STD_FILE_CopyFileA(folder.Path("none"), folder.Path("new"), false));
    EXPECT_EQ(folder.Read("new"), "");
}

TEST(CopyFile, IsTrueWhateverHappens) {
    const TemporaryFolder folder;
    EXPECT_TRUE(STD_FILE_CopyFileA(folder.Path("none"), folder.Path("no/such"), true));
    EXPECT_TRUE(STD_FILE_CopyFileA(folder.Write("from", "x"), "/dev/full", true)) << "a short write ends it";
    EXPECT_FALSE(STD_FILE_CopyFileW(L"a", L"b", true));
}

TEST(FileOperation, DoesNothing) {
    EXPECT_EQ(STD_FILE_SHFileOperationA(1, "a", "b"), 0);
    EXPECT_EQ(STD_FILE_SHFileOperationW(1, L"a", L"b"), 0);
}

TEST(DeleteDir, RemovesTheTree) {
    const TemporaryFolder folder;
    folder.Write("a b/c/d");
    EXPECT_TRUE(STD_FILE_DeleteDirA(folder.Path("a b/")));
    EXPECT_FALSE(STD_PATH_ExistA(folder.Path("a b")));
    EXPECT_TRUE(STD_FILE_DeleteDirA(folder.Path("a b"))) << "it is gone";
    EXPECT_FALSE(STD_FILE_DeleteDirW(L"/tmp/none"));
}

TEST(DeleteDir, DoesNotFollowLinks) {
    const TemporaryFolder folder;
    const TemporaryFolder elsewhere;
    elsewhere.Write("kept");
    fs::create_directories(folder.Path("a"));
    fs::create_directory_symlink(elsewhere.Path(), folder.Path("a/link"));
    EXPECT_TRUE(STD_FILE_DeleteDirA(folder.Path("a")));
    EXPECT_TRUE(STD_PATH_ExistA(elsewhere.Path("kept")));
}

TEST(CopyDir, AMissingDestinationBecomesTheCopy) {
    const TemporaryFolder folder;
    folder.Write("from/a/b", "x");
    int pid = 0;
    EXPECT_TRUE(STD_FILE_CopyDirA(folder.Path("from/"), folder.Path("to/"), &pid));
    EXPECT_GT(pid, 0);
    EXPECT_EQ(folder.Read("to/a/b"), "x");
}

TEST(CopyDir, AnExistingDestinationReceivesTheSourceInside) {
    const TemporaryFolder folder;
    folder.Write("from/a", "x");
    fs::create_directory(folder.Path("to"));
    EXPECT_TRUE(STD_FILE_CopyDirA(folder.Path("from"), folder.Path("to"), nullptr));
    EXPECT_EQ(folder.Read("to/from/a"), "x");
}

TEST(CopyDir, FailsWhenNothingWasCopied) {
    const TemporaryFolder folder;
    EXPECT_FALSE(STD_FILE_CopyDirA(folder.Path("none"), folder.Path("to"), nullptr));
    EXPECT_FALSE(STD_FILE_CopyDirW(L"a", L"b", nullptr));
}

TEST(RenameDir, MovesTheTree) {
    const TemporaryFolder folder;
    folder.Write("from/a", "x");
    EXPECT_TRUE(STD_FILE_RenameDirA(folder.Path("from/"), folder.Path("to/")));
    EXPECT_EQ(folder.Read("to/a"), "x");
    EXPECT_FALSE(STD_PATH_ExistA(folder.Path("from")));
    EXPECT_FALSE(STD_FILE_RenameDirA(folder.Path("from"), folder.Path("other")));
    EXPECT_FALSE(STD_FILE_RenameDirW(L"a", L"b"));
}

TEST(ShellCommands, AreNotRunWhenTheyWouldNotFit) {
    const TemporaryFolder folder;
    folder.Write("kept/a", "x");
    const std::string path = folder.Path("kept") + "/" + std::string(2100, '.');
    EXPECT_FALSE(STD_FILE_DeleteDirA(path));
    EXPECT_FALSE(STD_FILE_CopyDirA(folder.Path("kept"), path, nullptr));
    EXPECT_FALSE(STD_FILE_RenameDirA(folder.Path("kept"), path));
    EXPECT_EQ(folder.Read("kept/a"), "x");
}

TEST(DeleteEmptyDir, RemovesAnEmptyFolderOnly) {
    const TemporaryFolder folder;
    folder.Write("full/a");
    fs::create_directory(folder.Path("empty"));
    EXPECT_TRUE(STD_FILE_DeleteEmptyDirA(folder.Path("empty/")));
    EXPECT_FALSE(STD_PATH_ExistA(folder.Path("empty")));
    EXPECT_TRUE(STD_FILE_DeleteEmptyDirA(folder.Path("empty")));
    EXPECT_FALSE(STD_FILE_DeleteEmptyDirA(folder.Path("full")));
    EXPECT_TRUE(STD_PATH_ExistA(folder.Path("full/a")));
    EXPECT_TRUE(STD_FILE_DeleteEmptyDirW(L"/tmp")) << "nothing exists for the wide form";
}
