#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <regex>

#include "Common/ini/IniObj.h"
#include "Module/BackupLib/BackupMgr.h"
#include "Tests/Module/BackupLib/JobFixture.h"
#include "Tests/support/LogRecorder.h"

using testing::Contains;

namespace fs = std::filesystem;

namespace {

class RecordTest : public JobTest {
 protected:
    std::string Record() const { return ReadWholeFile(JobFolder() + "/backup_config.ini"); }

    std::string Value(const std::string& key) const {
        CIniObj record;
        EXPECT_TRUE(record.load(JobFolder() + "/backup_config.ini"));
        return record.getIni_string("backup_info", key, "none");
    }
};

}  // namespace

TEST_F(RecordTest, IsWrittenByteForByte) {
    const TemporaryFolder made;
    made.Write("backup/Manifest.db", std::string(5000, 'x'));
    tool.CopyBackup(made.Path("backup")).ExitMessage(0);
    device.name = "Anna's iPhone 📱";
    EXPECT_EQ(Start(-1), 0);
    const std::string time = Value("backuptime");
    std::time_t seconds = std::stol(time);
    char text[64];
    std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%SZ", std::localtime(&seconds));
    EXPECT_EQ(Record(),
              "[backup_info]\n"
              "deviceid = the-device\n"
              "devicename = Anna's iPhone 📱\n"
              "iosversion = 17.4.1\n"
              "serialnumber = SERIAL1\n"
              "producttype = iPhone14,5\n"
              "backuppath = " +
                  DeviceFolder() +
                  "\n"
                  "filesize = 4\n"
                  "backuptype = -1\n"
                  "backuptime = " +
                  time +
                  "\n"
                  "backuptimestr = " +
                  text +
                  "\n"
                  "isvalid = 1\n"
                  "backuptypedesc = backup_full\n"
                  "makeby = VelMora\n"
                  "protocolappnum = 0\n"
                  "\n");
    EXPECT_LE(std::abs(seconds - std::time(nullptr)), 30);
}

TEST_F(RecordTest, TheTimeIsLocalWhateverItsLetterSays) {
    setenv("TZ", "XYZ-5:45", 1);
    tzset();
    tool.ExitMessage(0);
    EXPECT_EQ(Start(0), 0);
    unsetenv("TZ");
    tzset();
    std::tm stamp{};
    ASSERT_NE(strptime(Value("backupTimeStr").c_str(), "%Y-%m-%dT%H:%M:%SZ", &stamp), nullptr);
    EXPECT_EQ(timegm(&stamp) - std::time_t{5 * 60 + 45} * 60, std::stol(Value("backupTime")));
}

TEST_F(RecordTest, TheSizeIsInKibAndNever0) {
    const std::vector<std::pair<int, std::string>> sizes = {
        {0, "1"}, {1023, "1"}, {2047, "1"}, {2048, "2"}, {10000, "9"}};
    for (const auto& [bytes, kib] : sizes) {
        const TemporaryFolder made;
        made.Write("backup/file", std::string(static_cast<std::size_t>(bytes), 'x'));
        ToolScript fresh;
        fresh.CopyBackup(made.Path("backup")).ExitMessage(0);
        EXPECT_EQ(Start(0), 0);
        EXPECT_EQ(Value("fileSize"), kib) << bytes;
        fs::remove_all(destination.Path("Velmora_Full_Backup"));
    }
}

TEST_F(RecordTest, TheTypesAreNamed) {
    BackupBuilder backup;
    const PhoneContent phone(backup);
    ToolMakes(backup);
    EXPECT_EQ(Start(10), 0);
    EXPECT_EQ(Value("backupType"), "10");
    EXPECT_EQ(Value("backupTypeDesc"), "backup_weChat,backup_SMS");
    fs::remove_all(fs::path(JobFolder()).parent_path());
    EXPECT_EQ(Start(0), 0);
    EXPECT_EQ(Value("backupTypeDesc"), "backup_iTunes");
}

TEST_F(RecordTest, AnOlderTypedBackupHasAHashCache) {
    Use(Layout::kOld);
    BackupBuilder backup;
    const PhoneContent phone(backup);
    ToolMakes(backup);
    EXPECT_EQ(Start(8), 0);
    char name[16];
    std::snprintf(name, sizeof name, "%x", static_cast<unsigned>(std::stol(Value("backupTime"))));
    EXPECT_EQ(Value("hashCache"), JobFolder() + "/" + name);
    EXPECT_EQ(Record().rfind("[backup_info]\nhashcache = ", 0), 0U) << "it is the first key";
    const std::string cache = ReadWholeFile(JobFolder() + "/" + name);
    EXPECT_EQ(cache.substr(4, 4), std::string("\x03\0\0\0", 4)) << "database, attachment and their folder";
    EXPECT_NE(cache.find("HomeDomainLibrary/SMS/sms.db"), std::string::npos);
}

TEST_F(RecordTest, ANewerBackupHasNoHashCache) {
    BackupBuilder backup;
    const PhoneContent phone(backup);
    ToolMakes(backup);
    EXPECT_EQ(Start(8), 0);
    EXPECT_EQ(Value("hashCache"), "none");
    EXPECT_EQ(FilesBelow(JobFolder()).count("backup_config.ini"), 1U);
}

TEST_F(RecordTest, AHashCacheThatCannotBeWrittenFailsTheJob) {
    Use(Layout::kOld);
    BackupBuilder backup;
    const PhoneContent phone(backup);
    // Folders in the way of every name that the cache could get in the next seconds.
    tool.CopyBackup(backup.Write(layout))
        .Shell("now=$(date +%s); for i in $(seq 0 60); do mkdir $JOB/$(printf %x $((now + i))); done")
        .ExitMessage(0);
    EXPECT_EQ(Start(8), 1009);
    EXPECT_THAT(RecordedTexts(), Contains("[Backup] SaveIOS9HashCache fail! "));
    EXPECT_EQ(Record(), "") << "the record is made by loading it, and not written";
}

TEST_F(RecordTest, ASecondJobIntoTheFolderKeepsOtherKeys) {
    tool.Shell(
            "mkdir -p $JOB; printf '[other]\\nk = v\\n[backup_info]\\nmine = kept\\nbackupType = 99\\n' > "
            "$JOB/backup_config.ini")
        .ExitMessage(0);
    EXPECT_EQ(Start(0), 0);
    EXPECT_EQ(Value("mine"), "kept");
    EXPECT_EQ(Value("backupType"), "0");
    EXPECT_THAT(Record(), testing::HasSubstr("[other]\nk = v\n"));
}

TEST_F(RecordTest, AContactsJobMeasuresTheFolderOfTheJobBefore) {
    const TemporaryFolder made;
    made.Write("backup/file", std::string(9000, 'x'));
    tool.CopyBackup(made.Path("backup")).ExitMessage(0);
    EXPECT_EQ(Start(0), 0);
    EXPECT_EQ(Start(16), 0);
    CIniObj record;
    const fs::path folder = destination.Path("Velmora_Contact_Backup");
    const std::string job = fs::directory_iterator(folder)->path().string();
    ASSERT_TRUE(record.load(job + "/backup_config.ini"));
    EXPECT_EQ(record.getIni_int("backup_info", "fileSize", -1), 8);
    EXPECT_EQ(record.getIni_string("backup_info", "backupPath", ""), job + "/the-device")
        << "that one is right";
}

TEST_F(RecordTest, LineEndsInTheDevicesNameDoNotBreakTheFile) {
    device.name = "Anna\n[evil]\r\nisvalid = 0";
    tool.ExitMessage(0);
    EXPECT_EQ(Start(0), 0);
    EXPECT_EQ(Value("isValid"), "1");
    EXPECT_EQ(Value("deviceName"), "Anna [evil]  isvalid = 0");
}
