// The list of backups, tried as a process.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "Tests/Host/kruteinctl/HostBundle.h"
#include "Tests/Host/kruteinctl/Output.h"

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

namespace fs = std::filesystem;
using Json = nlohmann::json;

namespace {

class ListTest : public testing::Test {
 protected:
    Finished List(const std::vector<std::string>& more = {}) const {
        std::vector<std::string> words = {"list", host.Backups()};
        words.insert(words.end(), more.begin(), more.end());
        return host.Run(words);
    }

    /// A record as the library writes it, and the folder of its backup.
    void HasRecord(const std::string& folder, const std::string& time, const std::string& name = "Phone",
                   int type = 8) const {
        host.Folder().Write("backups/" + folder + "/backup_config.ini",
                            "[backup_info]\ndeviceid = the-device\ndevicename = " + name +
                                "\niosversion = 17.4.1\nserialnumber = S1\nproducttype = iPhone14,5\n"
                                "backuptimestr = " +
                                time + "\nfilesize = 2048\nbackuptype = " + std::to_string(type) +
                                "\nisvalid = 1\n");
        fs::create_directories(host.Backups() + "/" + folder + "/the-device");
    }

    HostBundle host;
};

}  // namespace

TEST_F(ListTest, ShowsTheRecordsNewestFirst) {
    HasRecord("a/1", "2024-03-05T07:08:09Z", "Old");
    HasRecord("b/2", "2024-06-05T07:08:09Z", "New", -1);
    const std::vector<std::string> lines = Lines(List().output);
    ASSERT_EQ(lines.size(), 4U);
    EXPECT_THAT(lines[0], HasSubstr("Device"));
    EXPECT_EQ(lines[3], "backups: 2, damaged records: 0, without record: 0");
    EXPECT_EQ(lines[1], "New     17.4.1  full      2024-06-05 07:08:09  2.1 MB  valid  " + host.Backups() +
                            "/b/2/the-device");
    EXPECT_EQ(lines[2], "Old     17.4.1  messages  2024-03-05 07:08:09  2.1 MB  valid  " + host.Backups() +
                            "/a/1/the-device");
}

TEST_F(ListTest, JsonTellsAllOfARecord) {
    HasRecord("a/1", "2024-03-05T07:08:09Z", "手机");
    const std::vector<Json> objects = Objects(List({"--json"}).output);
    ASSERT_EQ(objects.size(), 2U);
    EXPECT_EQ(objects[0], Json({{"message_type", "backup"},
                                {"path", host.Backups() + "/a/1/the-device"},
                                {"udid", "the-device"},
                                {"device_name", "手机"},
                                {"product_type", "iPhone14,5"},
                                {"system_version", "17.4.1"},
                                {"serial_number", "S1"},
                                {"types", "messages"},
                                {"type", 8},
                                {"time", "2024-03-05T07:08:09Z"},
                                {"bytes", 2097152},
                                {"state", "valid"}}));
    EXPECT_EQ(objects[1]["backups"], 1);
}

TEST_F(ListTest, DamagedRecordsAreListedAsDamaged) {
    HasRecord("a/1", "2024-03-05T07:08:09Z");
    const std::string good = host.Folder().Read("backups/a/1/backup_config.ini");
    host.Folder().Write("backups/b/backup_config.ini", "[backup_info]\nthis is no ini file\n");
    host.Folder().Write("backups/c/backup_config.ini", "");
    host.Folder().Write("backups/d/backup_config.ini", std::string("\0\xff\xfe[", 4));
    host.Folder().Write("backups/e/backup_config.ini", good.substr(0, 20));
    host.Folder().Write("backups/f/backup_config.ini", std::string(100'000, 'x'));
    const Finished list = List();
    EXPECT_EQ(list.code, 0);
    EXPECT_EQ(list.errors, "");
    for (const std::string name : {"b", "c", "d", "e", "f"}) {
        EXPECT_THAT(list.output,
                    HasSubstr("damaged record: " + host.Backups() + "/" + name + "/backup_config.ini\n"));
    }
    EXPECT_EQ(Objects(List({"--json"}).output).back()["damaged_records"], 5);
}

TEST_F(ListTest, ABackupWithoutARecordIsMentioned) {
    host.Folder().Write("backups/the-device/Manifest.db");
    EXPECT_EQ(Lines(List().output).front(), "without record: " + host.Backups() + "/the-device");
    EXPECT_EQ(Objects(List({"--json"}).output).front()["message_type"], "without_record");
}

TEST_F(ListTest, ARecordWhoseBackupIsGoneSaysSo) {
    HasRecord("a/1", "2024-03-05T07:08:09Z");
    fs::remove_all(host.Backups() + "/a/1/the-device");
    EXPECT_THAT(List().output, AllOf(HasSubstr(" missing "), Not(HasSubstr(" valid "))));
}

TEST_F(ListTest, NothingInARecordReachesTheTerminal) {
    HasRecord("a/1", "2024-03-05T07:08:09Z", "\x1b[31mred\x1b[0m");
    EXPECT_THAT(List().output, AllOf(HasSubstr("?[31mred?[0m"), Not(HasSubstr("\x1b"))));
}

TEST_F(ListTest, LinksAreNotFollowed) {
    HasRecord("a/1", "2024-03-05T07:08:09Z");
    fs::create_directory_symlink("..", host.Backups() + "/a/loop");
    EXPECT_EQ(Objects(List({"--json"}).output).back()["backups"], 1);
}

TEST_F(ListTest, NothingIsWrittenByLooking) {
    host.Folder().Write("backups/empty/folder/file");
    EXPECT_EQ(List().output, "backups: 0, damaged records: 0, without record: 0\n");
    EXPECT_FALSE(fs::exists(host.Backups() + "/empty/backup_config.ini"));
}

TEST_F(ListTest, AFolderThatIsNotThere) {
    const Finished list = List();
    EXPECT_EQ(list.code, 9);
    EXPECT_THAT(list.errors, HasSubstr("there is no folder " + host.Backups()));
}
