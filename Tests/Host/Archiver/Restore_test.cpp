#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <filesystem>
#include <string>

#include "Host/ToolCodes.h"
#include "Tests/Host/Archiver/BackupReader.h"
#include "Tests/Host/Archiver/RestoreTest.h"
#include "Tests/support/TemporaryFolder.h"

namespace fs = std::filesystem;
using testing::HasSubstr;
using testing::StartsWith;

namespace {

class Restore : public RestoreTest, public testing::WithParamInterface<Phone> {
 protected:
    Restore() : RestoreTest(GetParam()) {}
};

}  // namespace

INSTANTIATE_TEST_SUITE_P(Phones, Restore, BothPhones(), testing::PrintToStringParamName());

TEST_P(Restore, ReadsEveryFileOfTheBackup) {
    const ToolRun run = Run(RestoreCommand());
    ASSERT_TRUE(EndedWith(run, kToolDone));
    const std::vector<ListedEntry> listed = ReadCatalogue(BackupPath());
    const auto total = static_cast<int>(std::count_if(
        listed.begin(), listed.end(), [](const ListedEntry& entry) { return entry.flags == 1; }));
    const std::vector<ToolMessage> progress = run.Progress();
    ASSERT_EQ(static_cast<int>(progress.size()), total + 1);
    for (int i = 0; i <= total; ++i) {
        EXPECT_EQ(progress[static_cast<std::size_t>(i)].first, i);
        EXPECT_EQ(progress[static_cast<std::size_t>(i)].second, total);
    }
    EXPECT_THAT(progress, testing::Contains(testing::Field(&ToolMessage::text,
                                                           std::string("CameraRollDomain/") + kPhotoPath)));
}

TEST_P(Restore, ChangesNothingInTheBackup) {
    const auto before = ReadTree(BackupPath());
    ASSERT_TRUE(EndedWith(Run(RestoreCommand()), kToolDone));
    ASSERT_TRUE(EndedWith(Run(RestoreSettingsCommand()), kToolDone));
    EXPECT_TRUE(ReadTree(BackupPath()) == before);
}

TEST_P(Restore, OfSettingsReadsOnlyThose) {
    fs::remove(PhotoFile());
    const ToolRun run = Run(RestoreSettingsCommand());
    ASSERT_TRUE(EndedWith(run, kToolDone));
    ASSERT_GT(run.Progress().size(), 10U);
    for (std::size_t i = 1; i < run.Progress().size(); ++i)
        EXPECT_THAT(run.Progress()[i].text, StartsWith("HomeDomain/Library/Preferences/"));
}

TEST_P(Restore, OfSettingsIsFromTheSourcesBackup) {
    nlohmann::json other = Description();
    other["udid"] = "other-device";
    Connect(other);
    const std::string command = "-version||-restore_all_setting|-backuppath|" + Path("backups") +
                                "|-source|" + kUdid + "|-target|other-device|-pipe|PIPE|-model|1";
    EXPECT_TRUE(EndedWith(Run(command), kToolDone));
    Disconnect(kUdid);
    EXPECT_TRUE(EndedWith(Run(command), kToolDone));
    Disconnect("other-device");
    EXPECT_TRUE(EndedWith(Run(command), kToolNoDevice));
}

TEST_P(Restore, OfSettingsNoticesADamagedOne) {
    fs::remove(BackupPath(PlaceOf("HomeDomain", "Library/Preferences/com.apple.camera.plist")));
    const ToolRun run = Run(RestoreSettingsCommand());
    EXPECT_TRUE(EndedWith(run, kToolBackupDamaged));
    EXPECT_THAT(run.errors, HasSubstr("com.apple.camera.plist"));
}

TEST_P(Restore, NeedsABackupOfTheDevice) {
    fs::rename(BackupPath(), Path("backups/other-device"));
    const ToolRun run = Run(RestoreCommand());
    EXPECT_TRUE(EndedWith(run, kToolNoBackup));
    EXPECT_THAT(run.errors, HasSubstr(BackupPath()));
    m_folder.Write("backups/" + std::string(kUdid), "a file");
    EXPECT_TRUE(EndedWith(Run(RestoreCommand()), kToolNoBackup));
}

TEST_P(Restore, LooksForTheBackupOnlyInTheFolder) {
    for (const std::string& source :
         {std::string("../backups/") + kUdid, std::string(), std::string("."), std::string("..")}) {
        const ToolRun run = Run("-version||-restore_all_setting|-backuppath|" + Path("backups") +
                                "|-source|" + source + "|-target|" + kUdid + "|-pipe|PIPE|-model|1");
        EXPECT_TRUE(EndedWith(run, kToolNoBackup)) << source;
    }
}

TEST_P(Restore, NeedsAConnectedDevice) {
    Disconnect(kUdid);
    EXPECT_TRUE(EndedWith(Run(RestoreCommand()), kToolNoDevice));
}

TEST_P(Restore, NeedsAFinishedBackup) {
    m_environment["KRUTEIN_SAMPLE_FILES_PER_SECOND"] = "100";
    const auto tool = Start(BackupCommand());
    tool->AwaitMessages(5);
    tool->Signal(SIGTERM);
    tool->Wait();
    ExpectDamaged("no finished backup");
    fs::remove(BackupPath("Status.plist"));
    ExpectDamaged("no finished backup");
}

TEST_P(Restore, NoticesAMissingFile) {
    fs::remove(PhotoFile());
    ExpectDamaged(PhotoPlace() + " (CameraRollDomain/" + kPhotoPath + ") cannot be opened");
}

TEST_P(Restore, NoticesAShortFile) {
    fs::resize_file(PhotoFile(), 299'999);
    ExpectDamaged(std::string(kPhotoPath) + ") has 299999 bytes instead of 300000");
}

TEST_P(Restore, NoticesALongFile) {
    fs::resize_file(PhotoFile(), 300'001);
    ExpectDamaged(std::string(kPhotoPath) + ") has 300001 bytes instead of 300000");
}

TEST_P(Restore, DoesNotWaitForAPipeInPlaceOfAFile) {
    fs::remove(PhotoFile());
    ASSERT_EQ(mkfifo(PhotoFile().c_str(), 0644), 0);
    ExpectDamaged(std::string(kPhotoPath) + ") is no file");
}

TEST_P(Restore, DoesNotReadAFolderInPlaceOfAFile) {
    fs::remove(PhotoFile());
    fs::create_directory(PhotoFile());
    ExpectDamaged(std::string(kPhotoPath) + ") is no file");
}

TEST_P(Restore, DoesNotFollowALinkInPlaceOfAFile) {
    fs::rename(PhotoFile(), Path("elsewhere"));
    fs::create_symlink(Path("elsewhere"), PhotoFile());
    ExpectDamaged(kPhotoPath);
}

TEST_P(Restore, NoticesAMissingCatalogue) {
    fs::remove(CataloguePath());
    ExpectDamaged("neither Manifest.db nor Manifest.mbdb");
}

TEST_P(Restore, DoesNotFollowALinkInPlaceOfTheCatalogue) {
    fs::rename(CataloguePath(), Path("elsewhere"));
    fs::create_symlink(Path("elsewhere"), CataloguePath());
    ExpectDamaged("neither Manifest.db nor Manifest.mbdb");
}

TEST_P(Restore, DoesNotGuessWhichOfTwoCataloguesIsRight) {
    fs::copy_file(CataloguePath(), BackupPath(m_phone.isFlat ? "Manifest.db" : "Manifest.mbdb"));
    ExpectDamaged("both Manifest.db and Manifest.mbdb");
}

TEST_P(Restore, NoticesACatalogueThatIsNone) {
    for (const std::string& content : {std::string(), std::string("mbdb"), std::string("mbdb\x05\x01", 6),
                                       std::string(20'000, 'x'), std::string(20'000, '\0')}) {
        m_folder.Write("backups/" + std::string(kUdid) + "/" + m_phone.catalogue, content);
        ExpectDamaged(m_phone.catalogue);
    }
}

/// What lies there tells the layout, not the device, whose system may have become newer since.
TEST_P(Restore, ReadsABackupOfBeforeTheSystemWasChanged) {
    nlohmann::json description = Description();
    description["systemVersion"] = (m_phone.isFlat ? kNewPhone : kOldPhone).systemVersion;
    Connect(description);
    EXPECT_TRUE(EndedWith(Run(RestoreCommand()), kToolDone));
}

TEST_P(Restore, FindsTheCatalogueWhateverTheFolderIsCalled) {
    const std::string odd = Path("a?b#c%41 ü");
    fs::rename(Path("backups"), odd);
    std::string command = RestoreCommand();
    EXPECT_TRUE(EndedWith(Run(command.replace(command.find(Path("backups")), Path("backups").size(), odd)),
                          kToolDone));
    command = RestoreCommand();
    command.replace(command.find(Path("backups")), Path("backups").size(), "/" + odd);
    EXPECT_TRUE(EndedWith(Run(command), kToolDone));
}
