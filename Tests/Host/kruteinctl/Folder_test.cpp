#include "Host/kruteinctl/Folder.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <unistd.h>

#include <filesystem>

#include "Host/kruteinctl/Backups.h"
#include "Host/kruteinctl/DeviceQuery.h"
#include "Host/kruteinctl/Failure.h"
#include "Host/kruteinctl/WorkFolder.h"
#include "Tests/support/TemporaryFolder.h"

namespace fs = std::filesystem;

namespace {

/// The exit code of what the function throws; kDone when it throws nothing.
template <typename Function>
ExitCode CodeOf(Function function) {
    try {
        function();
    } catch (const Failure& failure) {
        return failure.Code();
    }
    return ExitCode::kDone;
}

constexpr char kUdid[] = "00008110-000A2D3E1E08801E";

}  // namespace

TEST(CheckedFolder, IsAbsoluteAndHasNoSlashAtItsEnd) {
    EXPECT_EQ(CheckedFolder("/a/b/"), "/a/b");
    EXPECT_EQ(CheckedFolder("/a/./b/../c"), "/a/c");
    EXPECT_EQ(CheckedFolder("/"), "/");
    EXPECT_EQ(CheckedFolder("x"), (fs::current_path() / "x").string());
    EXPECT_EQ(CheckedFolder("/with blank/and ümlaut"), "/with blank/and ümlaut");
}

TEST(CheckedFolder, RefusesWhatTheShellOrTheToolWouldInterpret) {
    for (const char* folder : {"/a\"b", "/a`b", "/a$b", "/a\\b", "/a\nb", "/a\rb", "/a|b", ""}) {
        EXPECT_EQ(CodeOf([&] { CheckedFolder(folder); }), ExitCode::kUsage) << folder;
    }
    EXPECT_EQ(CodeOf([] { CheckedFolder("/" + std::string(1100, 'x')); }), ExitCode::kUsage);
}

TEST(EnsureWritable, MakesTheFolder) {
    const TemporaryFolder folder;
    EnsureWritable(folder.Path("a/b"));
    EXPECT_TRUE(fs::is_directory(folder.Path("a/b")));
    EXPECT_TRUE(fs::is_empty(folder.Path("a/b"))) << "the probe is gone";
}

TEST(EnsureWritable, RefusesWhereNothingCanBeMade) {
    const TemporaryFolder folder;
    const std::string file = folder.Write("file");
    EXPECT_EQ(CodeOf([&] { EnsureWritable(file); }), ExitCode::kNotWritable);
    EXPECT_EQ(CodeOf([&] { EnsureWritable(file + "/below"); }), ExitCode::kNotWritable);
    EXPECT_EQ(CodeOf([] { EnsureWritable("/proc"); }), ExitCode::kNotWritable);
}

TEST(FreeBytes, AsksTheFileSystem) {
    const TemporaryFolder folder;
    EXPECT_GT(FreeBytes(folder.Path()), 0U);
    EXPECT_EQ(CodeOf([&] { FreeBytes(folder.Path("none")); }), ExitCode::kNotWritable);
}

TEST(WorkFolder, LivesAsLongAsTheObject) {
    const TemporaryFolder folder;
    {
        const WorkFolder work(folder.Path());
        EXPECT_EQ(work.Path(), folder.Path("temp"));
        folder.Write("temp/udid/file");
    }
    EXPECT_FALSE(fs::exists(folder.Path("temp")));
}

TEST(WorkFolder, NeverTakesAFolderOfTheUsers) {
    const TemporaryFolder folder;
    folder.Write("temp/holiday.jpg", "kept");
    EXPECT_EQ(CodeOf([&] { WorkFolder work(folder.Path()); }), ExitCode::kNotWritable);
    EXPECT_EQ(folder.Read("temp/holiday.jpg"), "kept");
}

TEST(WorkFolder, NeverTakesAFileOrALink) {
    const TemporaryFolder folder;
    folder.Write("temp", "kept");
    EXPECT_EQ(CodeOf([&] { WorkFolder work(folder.Path()); }), ExitCode::kNotWritable);
    EXPECT_EQ(folder.Read("temp"), "kept");
    fs::remove(folder.Path("temp"));
    folder.Write("elsewhere/file", "kept");
    fs::create_directory_symlink(folder.Path("elsewhere"), folder.Path("temp"));
    EXPECT_EQ(CodeOf([&] { WorkFolder work(folder.Path()); }), ExitCode::kNotWritable);
    EXPECT_EQ(folder.Read("elsewhere/file"), "kept");
}

TEST(WorkFolder, TakesAnEmptyOne) {
    const TemporaryFolder folder;
    fs::create_directory(folder.Path("temp"));
    EXPECT_EQ(CodeOf([&] { WorkFolder work(folder.Path()); }), ExitCode::kDone);
}

TEST(WorkFolder, RemovesWhatAKilledRunHasLeft) {
    const TemporaryFolder folder;
    folder.Write("temp/.kruteinctl");
    folder.Write("temp/udid/file");
    const WorkFolder work(folder.Path());
    EXPECT_FALSE(fs::exists(folder.Path("temp/udid")));
}

TEST(WorkFolder, IsForOneRunAtATime) {
    const TemporaryFolder folder;
    const WorkFolder first(folder.Path());
    folder.Write("temp/udid/file", "of the first");
    EXPECT_EQ(CodeOf([&] { WorkFolder second(folder.Path()); }), ExitCode::kFailed);
    EXPECT_EQ(folder.Read("temp/udid/file"), "of the first");
}

TEST(FindBackup, TakesTheNewestOfTheDevice) {
    const TemporaryFolder folder;
    const std::string udid = kUdid;
    folder.Write(udid + "/Manifest.db");
    EXPECT_EQ(FindBackup(folder.Path(), udid).name, udid);
    folder.Write(udid + "-20240305-070809/Manifest.db");
    folder.Write(udid + "-20230305-235959/Manifest.mbdb");
    folder.Write(udid + "-20250101-000000/unfinished");
    folder.Write(udid + "-copy/Manifest.db");
    folder.Write("00008110-00000000000000FF-20990101-000000/Manifest.db");
    EXPECT_EQ(FindBackup(folder.Path(), udid).Path(), folder.Path(udid + "-20240305-070809"));
}

TEST(FindBackup, TakesABackupItself) {
    const TemporaryFolder folder;
    folder.Write("renamed/Manifest.mbdb");
    const BackupPlace place = FindBackup(folder.Path("renamed"), kUdid);
    EXPECT_EQ(place.parent, folder.Path());
    EXPECT_EQ(place.name, "renamed");
}

TEST(FindBackup, FailsWhereThereIsNone) {
    const TemporaryFolder folder;
    EXPECT_EQ(CodeOf([&] { FindBackup(folder.Path(), kUdid); }), ExitCode::kNoBackup);
    EXPECT_EQ(CodeOf([&] { FindBackup(folder.Path("none"), kUdid); }), ExitCode::kNoBackup);
}

TEST(ToolView, ShowsABackupUnderTheNameOfItsDevice) {
    const TemporaryFolder folder;
    folder.Write("renamed/Manifest.db", "x");
    std::string shown;
    {
        const ToolView view({folder.Path(), "renamed"}, kUdid);
        shown = view.Folder();
        EXPECT_TRUE(fs::equivalent(shown + "/" + kUdid, folder.Path("renamed")));
    }
    EXPECT_FALSE(fs::exists(shown));
    EXPECT_EQ(folder.Read("renamed/Manifest.db"), "x") << "the backup itself stays";
    EXPECT_EQ(ToolView({folder.Path(), kUdid}, kUdid).Folder(), folder.Path());
}

TEST(SizeIn, TakesTheTotalLine) {
    EXPECT_EQ(SizeIn("Device\nTotal size: 12345 bytes\n"), 12345U);
    EXPECT_EQ(SizeIn("Total size: 0 bytes"), 0U);
    for (const char* text : {"", "Total size: many bytes", "Total size: -5 bytes", "Total size: 5",
                             "Total size: 99999999999999999999 bytes"}) {
        EXPECT_EQ(CodeOf([&] { SizeIn(text); }), ExitCode::kFailed) << text;
    }
}
