// Where a backup is written to: what it replaces, and what can be wrong with it.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#if defined(__linux__)
#include <sys/mount.h>
#endif

#include <cstdint>
#include <filesystem>
#include <string>
#include <tuple>

#include "Host/ToolCodes.h"
#include "Tests/Host/Archiver/ArchiverTool.h"
#include "Tests/Host/Archiver/BackupReader.h"

namespace fs = std::filesystem;
using testing::Contains;
using testing::HasSubstr;
using testing::Pair;

namespace {

class TargetTest : public ArchiverTest {
 protected:
    using ArchiverTest::ArchiverTest;

    static constexpr char kPhoto[] = "Media/DCIM/100APPLE/IMG_0001.JPG";

    void Put(const std::string& name, const std::string& content = "x") const {
        m_folder.Write("backups/" + std::string(kUdid) + "/" + name, content);
    }

    /// As on a disk that has no room for larger files.
    void LimitFileSize(rlim_t bytes) {
        m_prepare = [bytes] {
            const rlimit limit{bytes, bytes};
            setrlimit(RLIMIT_FSIZE, &limit);
        };
    }
};

/// A small file system that is unmounted at the end.
class SmallDisk {
 public:
    SmallDisk(const std::string& path, const char* options) : m_path(path) {
        fs::create_directories(path);
#if defined(__linux__)
        m_mounted = mount("none", path.c_str(), "tmpfs", 0, options) == 0;
#else
        static_cast<void>(options);
#endif
    }
    ~SmallDisk() {
#if defined(__linux__)
        if (m_mounted) umount(m_path.c_str());
#endif
    }
    SmallDisk(const SmallDisk&) = delete;
    SmallDisk& operator=(const SmallDisk&) = delete;

    bool IsMounted() const {
        return m_mounted;
    }

 private:
    std::string m_path;
    bool m_mounted = false;
};

class Target : public TargetTest, public testing::WithParamInterface<Phone> {
 protected:
    Target() : TargetTest(GetParam()) {}
};

class MarkOfABackup : public TargetTest, public testing::WithParamInterface<std::tuple<Phone, const char*>> {
 protected:
    MarkOfABackup() : TargetTest(std::get<Phone>(GetParam())) {}
};

}  // namespace

TEST_P(MarkOfABackup, LetsTheFolderBeReplaced) {
    Put(std::get<const char*>(GetParam()));
    Put("00/old");
    Put("deep/er/and/deeper/old");
    Put(".hidden");
    ASSERT_TRUE(EndedWith(BackUp(), kToolDone));
    EXPECT_FALSE(fs::exists(BackupPath("00/old")));
    EXPECT_FALSE(fs::exists(BackupPath("deep")));
    EXPECT_FALSE(fs::exists(BackupPath(".hidden")));
    EXPECT_THAT(ReadPlist(BackupPath("Status.plist")), Contains(Pair("SnapshotState", "finished")));
}

INSTANTIATE_TEST_SUITE_P(Names, MarkOfABackup,
                         testing::Combine(BothPhones(), testing::Values("Info.plist", "Status.plist",
                                                                        "Manifest.db", "Manifest.mbdb")));

INSTANTIATE_TEST_SUITE_P(Phones, Target, BothPhones(), testing::PrintToStringParamName());

TEST_P(Target, MayBeAnEmptyFolder) {
    fs::create_directories(BackupPath());
    EXPECT_TRUE(EndedWith(BackUp(), kToolDone));
}

TEST_P(Target, IsReplacedAgainAndAgain) {
    ASSERT_TRUE(EndedWith(BackUp(), kToolDone));
    nlohmann::json description = Description();
    description["contents"].erase("photos");
    Connect(description);
    ASSERT_TRUE(fs::exists(BackupPath(PlaceOf("CameraRollDomain", kPhoto))));
    ASSERT_TRUE(EndedWith(BackUp(), kToolDone));
    EXPECT_FALSE(fs::exists(BackupPath(PlaceOf("CameraRollDomain", kPhoto))));
}

TEST_P(Target, IsReplacedWhenTheSystemOfTheDeviceWasChanged) {
    ASSERT_TRUE(EndedWith(BackUp(), kToolDone));
    const Phone other = m_phone.isFlat ? kNewPhone : kOldPhone;
    nlohmann::json description = Description();
    description["systemVersion"] = other.systemVersion;
    Connect(description);
    ASSERT_TRUE(EndedWith(BackUp(), kToolDone));
    EXPECT_FALSE(fs::exists(CataloguePath()));
    EXPECT_FALSE(fs::exists(BackupPath(PlaceOf("CameraRollDomain", kPhoto))));
    m_phone = other;
    EXPECT_TRUE(fs::exists(CataloguePath()));
    EXPECT_TRUE(fs::exists(BackupPath(PlaceOf("CameraRollDomain", kPhoto))));
    EXPECT_TRUE(EndedWith(Run(RestoreCommand()), kToolDone));
}

TEST_P(Target, IsLeftAloneWhenItHoldsSomethingElse) {
    Put("holiday.jpg", "precious");
    Put("sub/Info.plist", "precious too");
    const ToolRun run = BackUp();
    EXPECT_TRUE(EndedWith(run, kToolNotWritable));
    EXPECT_THAT(run.errors, HasSubstr(BackupPath() + " holds something else"));
    const auto tree = ReadTree(BackupPath());
    EXPECT_EQ(tree.size(), 2U);
    EXPECT_THAT(tree, Contains(Pair("holiday.jpg", "precious")));
}

TEST_P(Target, IsNotTakenForABackupBecauseOfALink) {
    m_folder.Write("elsewhere", "precious");
    fs::create_directories(BackupPath());
    fs::create_symlink(Path("elsewhere"), BackupPath("Info.plist"));
    EXPECT_TRUE(EndedWith(BackUp(), kToolNotWritable));
    EXPECT_TRUE(fs::is_symlink(BackupPath("Info.plist")));
}

TEST_P(Target, MustNotBeALink) {
    m_folder.Write("elsewhere/Info.plist", "precious");
    fs::create_directories(Path("backups"));
    fs::create_directory_symlink(Path("elsewhere"), BackupPath());
    const ToolRun run = BackUp();
    EXPECT_TRUE(EndedWith(run, kToolNotWritable));
    EXPECT_THAT(run.errors, HasSubstr(BackupPath()));
    EXPECT_EQ(ReadTree(Path("elsewhere")).size(), 1U);
}

TEST_P(Target, IsReplacedWithoutFollowingLinks) {
    m_folder.Write("elsewhere/precious", "precious");
    Put("Info.plist");
    fs::create_directory_symlink(Path("elsewhere"), BackupPath("00"));
    fs::create_directory_symlink(Path("elsewhere"), BackupPath("other"));
    fs::create_symlink(Path("elsewhere/precious"), BackupPath("Status.plist"));
    ASSERT_TRUE(EndedWith(BackUp(), kToolDone));
    EXPECT_THAT(ReadTree(Path("elsewhere")), testing::ElementsAre(Pair("precious", "precious")));
    EXPECT_FALSE(fs::is_symlink(BackupPath("00")));
    EXPECT_FALSE(fs::exists(BackupPath("other")));
}

TEST_P(Target, MustBeGiven) {
    std::string command = BackupCommand("-");
    command.replace(command.find("|-|") + 1, 1, "");
    const ToolRun run = Run(command);
    EXPECT_TRUE(EndedWith(run, kToolNotWritable));
    EXPECT_THAT(run.errors, HasSubstr("no folder is given"));
}

TEST_P(Target, MustNotLieBelowAFile) {
    m_folder.Write("file");
    const ToolRun run = Run(BackupCommand(Path("file/below")));
    EXPECT_TRUE(EndedWith(run, kToolNotWritable));
    EXPECT_THAT(run.errors, HasSubstr(Path("file")));
}

TEST_P(Target, MustNotBeAFile) {
    m_folder.Write("backups/" + std::string(kUdid), "precious");
    const ToolRun run = BackUp();
    EXPECT_TRUE(EndedWith(run, kToolNotWritable));
    EXPECT_THAT(run.errors, HasSubstr(BackupPath()));
    EXPECT_EQ(ReadWholeFile(BackupPath()), "precious");
}

TEST_P(Target, MustBeWritable) {
#if defined(__linux__)
    const ToolRun run = Run(BackupCommand("/proc/backups"));
    EXPECT_TRUE(EndedWith(run, kToolNotWritable));
    EXPECT_THAT(run.errors, HasSubstr("/proc/backups"));
#else
    GTEST_SKIP() << "needs a file system where nobody may write";
#endif
}

TEST_P(Target, HasAPathThatTheSystemTakes) {
    const ToolRun run = Run(BackupCommand(Path(std::string(300, 'x'))));
    EXPECT_TRUE(EndedWith(run, kToolNotWritable));
    EXPECT_THAT(run.errors, HasSubstr("xxx"));
}

TEST_P(Target, IsFullForALargeFile) {
    LimitFileSize(250'000);
    const ToolRun run = BackUp();
    EXPECT_TRUE(EndedWith(run, kToolDiskFull));
    const std::string place = PlaceOf("CameraRollDomain", kPhoto);
    EXPECT_THAT(run.errors, HasSubstr(place));
    // What was written of it is gone; what was finished is there.
    EXPECT_FALSE(fs::exists(BackupPath(place)));
    EXPECT_TRUE(fs::exists(BackupPath(PlaceOf("3d0d7e5fb2ce288813306e4d4636395e047a3d28"))));
    EXPECT_THAT(ReadPlist(BackupPath("Status.plist")), Contains(Pair("SnapshotState", "uploading")));
}

TEST_P(Target, IsFullForADatabase) {
    LimitFileSize(20'000);
    const ToolRun run = BackUp();
    EXPECT_TRUE(EndedWith(run, kToolDiskFull));
    EXPECT_THAT(run.errors, HasSubstr("31bb7ba8914766d4ba40d6dfb6113c8b614be442"));
    EXPECT_FALSE(fs::exists(BackupPath(PlaceOf("31bb7ba8914766d4ba40d6dfb6113c8b614be442"))));
    EXPECT_FALSE(fs::exists(CataloguePath()));
}

TEST_P(Target, IsFullForTheCatalogue) {
    nlohmann::json description = Description();
    description["contents"] = {{"other", {{"count", 400}, {"bytesEach", 10}}}};
    Connect(description);
    LimitFileSize(40'000);
    const ToolRun run = BackUp();
    EXPECT_TRUE(EndedWith(run, kToolDiskFull));
    EXPECT_THAT(run.errors, HasSubstr(m_phone.catalogue));
    EXPECT_FALSE(fs::exists(CataloguePath()));
}

TEST_P(Target, IsFullWhenTheDiskIs) {
    const SmallDisk disk(Path("small"), "size=1m");
    if (!disk.IsMounted()) GTEST_SKIP() << "cannot mount a small file system";
    const ToolRun run = Run(BackupCommand(Path("small")));
    EXPECT_TRUE(EndedWith(run, kToolDiskFull));
    EXPECT_THAT(run.errors, HasSubstr("No space left"));
}

TEST_P(Target, IsFullForADatabaseWhenTheDiskIs) {
    const SmallDisk disk(Path("small"), "size=64k");
    if (!disk.IsMounted()) GTEST_SKIP() << "cannot mount a small file system";
    const ToolRun run = Run(BackupCommand(Path("small")));
    EXPECT_TRUE(EndedWith(run, kToolDiskFull));
    EXPECT_FALSE(fs::exists(Path(std::string("small/") + kUdid + "/" + m_phone.catalogue)));
}

TEST_P(Target, IsFullForTheCatalogueWhenTheDiskIs) {
    nlohmann::json description = Description();
    description["contents"] = {{"other", {{"count", 400}, {"bytesEach", 10}}}};
    Connect(description);
    ASSERT_TRUE(EndedWith(BackUp(), kToolDone));
    // Of a backup like that one, all files that come before the catalogue and some of the catalogue fit.
    constexpr std::uintmax_t kPage = 4096;
    std::uintmax_t pages = 5;
    for (const auto& [place, bytes] : ReadTree(BackupPath())) {
        if (place != m_phone.catalogue && place != "Manifest.plist")
            pages += (bytes.size() + kPage - 1) / kPage;
    }
    const std::string options = "size=" + std::to_string(pages * kPage);
    const SmallDisk disk(Path("small"), options.c_str());
    if (!disk.IsMounted()) GTEST_SKIP() << "cannot mount a small file system";
    const ToolRun run = Run(BackupCommand(Path("small")));
    EXPECT_TRUE(EndedWith(run, kToolDiskFull));
    EXPECT_THAT(run.errors, HasSubstr(m_phone.catalogue));
    EXPECT_FALSE(fs::exists(Path(std::string("small/") + kUdid + "/" + m_phone.catalogue)));
}

TEST_P(Target, MakesRoomBeforeAnythingIsWritten) {
    nlohmann::json description = Description();
    description["contents"] = {{"photos", {{"count", 10}, {"bytesEach", 150'000}}}};
    Connect(description);
    const SmallDisk disk(Path("small"), "size=3m");
    if (!disk.IsMounted()) GTEST_SKIP() << "cannot mount a small file system";
    ASSERT_TRUE(EndedWith(Run(BackupCommand(Path("small"))), kToolDone));
    EXPECT_TRUE(EndedWith(Run(BackupCommand(Path("small"))), kToolDone));
}

#if defined(__linux__)
TEST_P(Target, OnAReadOnlyFileSystemIsNotWritable) {
    const SmallDisk disk(Path("small"), "size=1m");
    if (!disk.IsMounted()) GTEST_SKIP() << "cannot mount a small file system";
    ASSERT_EQ(mount("none", Path("small").c_str(), "tmpfs", MS_REMOUNT | MS_RDONLY, nullptr), 0);
    EXPECT_TRUE(EndedWith(Run(BackupCommand(Path("small"))), kToolNotWritable));
}
#endif
