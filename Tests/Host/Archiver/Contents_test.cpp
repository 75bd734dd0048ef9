// What the files of a backup hold.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>
#include <string>

#include "Host/ToolCodes.h"
#include "Tests/Host/Archiver/ArchiverTool.h"
#include "Tests/Host/Archiver/BackupReader.h"

using testing::EndsWith;
using testing::IsEmpty;
using testing::MatchesRegex;
using testing::Not;
using testing::StartsWith;

namespace {

constexpr char kWhatsAppDomain[] = "AppDomainGroup-group.net.whatsapp.WhatsApp.shared";

// The well-known IDs of these databases.
constexpr char kMessages[] = "3d0d7e5fb2ce288813306e4d4636395e047a3d28";
constexpr char kWhatsApp[] = "7c7fba66680ef796b916b067077cc246adacf01d";
constexpr char kContacts[] = "31bb7ba8914766d4ba40d6dfb6113c8b614be442";
constexpr char kContactImages[] = "cd6702cea29fe89cf280a76794405adb17f9a0ee";

class Contents : public BothPhonesTest {
 protected:
    void SetUp() override { ASSERT_TRUE(EndedWith(BackUp(), kToolDone)); }

    std::string FilePath(const std::string& fileId) const { return BackupPath(PlaceOf(fileId)); }

    std::string Value(const std::string& fileId, const std::string& sql) const {
        return QueryOne(FilePath(fileId), sql);
    }

    std::string Count(const std::string& fileId, const std::string& table) const {
        return Value(fileId, "SELECT count(*) FROM " + table);
    }

    std::string Size(const std::string& domain, const std::string& path) const {
        return std::to_string(ReadWholeFile(BackupPath(PlaceOf(domain, path))).size());
    }

    /// The IDs of the databases, one for each account.
    std::vector<std::string> WeChatAccounts() const {
        std::vector<std::string> fileIds;
        for (const ListedEntry& entry : ReadCatalogue(BackupPath())) {
            if (entry.domain != "AppDomain-com.tencent.xin") continue;
            if (entry.path.find("/DB/MM.sqlite") == std::string::npos) continue;
            EXPECT_THAT(entry.path, MatchesRegex("Documents/[0-9a-f]{32}/DB/MM.sqlite"));
            fileIds.push_back(entry.fileId);
        }
        return fileIds;
    }
};

}  // namespace

INSTANTIATE_TEST_SUITE_P(Phones, Contents, BothPhones(), testing::PrintToStringParamName());

TEST_P(Contents, HasOnlyIntactDatabases) {
    int databases = 0;
    for (const auto& [place, bytes] : ReadTree(BackupPath())) {
        if (bytes.compare(0, 15, "SQLite format 3") != 0) continue;
        EXPECT_EQ(QueryOne(BackupPath(place), "PRAGMA integrity_check"), "ok") << place;
        EXPECT_EQ(QueryOne(BackupPath(place), "PRAGMA page_size"), "4096");
        EXPECT_EQ(bytes.size() % 4096, 0U);
        ++databases;
    }
    // Messages, WhatsApp, two accounts of WeChat, contacts and their images; the newer catalogue is one too.
    EXPECT_EQ(databases, m_phone.isFlat ? 6 : 7);
}

TEST_P(Contents, HasTheMessages) {
    EXPECT_EQ(Count(kMessages, "message"), "83");
    EXPECT_EQ(Count(kMessages, "chat"), "6");
    EXPECT_EQ(Count(kMessages, "handle"), "6");
    EXPECT_EQ(Count(kMessages, "attachment"), "10");
    EXPECT_EQ(Count(kMessages, "chat_message_join"), "83");
    EXPECT_EQ(Count(kMessages, "message_attachment_join"), "10");
    // One of the chats is a group of three.
    EXPECT_EQ(Count(kMessages, "chat_handle_join"), "8");
    EXPECT_EQ(Value(kMessages, "SELECT chat_identifier FROM chat WHERE style = 43"), "chat000000005");
}

TEST_P(Contents, HasMessagesThatAReaderCanShow) {
    const auto rows = Query(FilePath(kMessages), R"(
        SELECT m.text, h.id, c.chat_identifier, m.is_from_me, datetime(m.date / 1000000000 + 978307200, 'unixepoch')
        FROM message m JOIN chat_message_join j ON j.message_id = m.ROWID JOIN chat c ON c.ROWID = j.chat_id
            LEFT JOIN handle h ON h.ROWID = m.handle_id ORDER BY m.date)");
    ASSERT_EQ(rows.size(), 83U);
    EXPECT_EQ(rows[0][4], "2024-01-01 08:00:00");
    EXPECT_EQ(rows[82][4], "2024-01-01 21:40:00");
    std::set<std::string> texts;
    for (const auto& row : rows) {
        texts.insert(row[0]);
        EXPECT_THAT(row[0], Not(IsEmpty()));
        EXPECT_EQ(row[1].empty(), row[3] == "1") << "only what others write has a sender";
    }
    EXPECT_GT(texts.size(), 10U);
}

TEST_P(Contents, HasTheAttachmentsOfMessages) {
    const auto rows =
        Query(FilePath(kMessages), "SELECT filename, total_bytes, mime_type, transfer_name FROM attachment");
    ASSERT_EQ(rows.size(), 10U);
    for (const auto& row : rows) {
        EXPECT_THAT(row[0],
                    MatchesRegex("~/Library/SMS/Attachments/[0-9a-f]{2}/[0-9]{2}/[0-9A-F-]{36}/IMG_.*"));
        EXPECT_EQ(Size("MediaDomain", row[0].substr(2)), row[1]);
        EXPECT_EQ(row[1], "2000");
        EXPECT_EQ(row[2], "image/jpeg");
        EXPECT_THAT(row[0], EndsWith("/" + row[3]));
    }
    EXPECT_EQ(rows[0][3], "IMG_0001.JPG");
    EXPECT_EQ(Value(kMessages,
                    "SELECT count(*) FROM message WHERE cache_has_attachments = 1 AND ROWID IN "
                    "(SELECT message_id FROM message_attachment_join)"),
              "10");
}

TEST_P(Contents, HasWhatsApp) {
    EXPECT_EQ(Count(kWhatsApp, "ZWACHATSESSION"), "4");
    EXPECT_EQ(Count(kWhatsApp, "ZWAMESSAGE"), "61");
    EXPECT_EQ(Value(kWhatsApp, "SELECT sum(ZMESSAGECOUNTER) FROM ZWACHATSESSION"), "61");
    EXPECT_EQ(Value(kWhatsApp, R"(SELECT count(*) FROM ZWACHATSESSION s WHERE ZLASTMESSAGE =
                                  (SELECT max(Z_PK) FROM ZWAMESSAGE WHERE ZCHATSESSION = s.Z_PK))"),
              "4");
    const auto media = Query(FilePath(kWhatsApp), "SELECT ZMEDIALOCALPATH, ZFILESIZE FROM ZWAMEDIAITEM");
    EXPECT_EQ(media.size(), 3U);
    for (const auto& row : media)
        EXPECT_EQ(Size(kWhatsAppDomain, "Message/" + row[0]), row[1]);
    EXPECT_EQ(Value(kWhatsApp,
                    "SELECT count(*) FROM ZWAMEDIAITEM i JOIN ZWAMESSAGE m ON m.Z_PK = i.ZMESSAGE "
                    "AND m.ZMEDIAITEM = i.Z_PK AND m.ZMESSAGETYPE = 1"),
              "3");
}

TEST_P(Contents, HasTheAccountsOfWeChat) {
    const std::vector<std::string> accounts = WeChatAccounts();
    ASSERT_EQ(accounts.size(), 2U);
    int chats = 0;
    int messages = 0;
    int friends = 0;
    for (const std::string& account : accounts) {
        friends += std::stoi(Count(account, "Friend"));
        for (const auto& row :
             Query(FilePath(account), "SELECT name FROM sqlite_master WHERE name LIKE 'Chat%'")) {
            EXPECT_THAT(row[0], MatchesRegex("Chat_[0-9a-f]{32}"));
            ++chats;
            messages += std::stoi(Count(account, row[0]));
            EXPECT_EQ(
                Value(account,
                      "SELECT count(*) FROM " + row[0] +
                          " WHERE TableVer = 1 AND MesSvrID > 0 AND CreateTime > 0 AND Message <> ''"
                          " AND Status = 4 AND ImgStatus IN (1, 2) AND Type IN (1, 3) AND Des IN (0, 1)"),
                Count(account, row[0]));
        }
    }
    EXPECT_EQ(chats, 5);
    EXPECT_EQ(friends, 5);
    EXPECT_EQ(messages, 32);
}

TEST_P(Contents, HasTheContacts) {
    EXPECT_EQ(Count(kContacts, "ABPerson"), "12");
    EXPECT_EQ(
        Value(kContacts, "SELECT count(*) FROM ABMultiValue WHERE property = 3 AND value LIKE '+1555%'"),
        "12");
    EXPECT_EQ(Value(kContacts, "SELECT count(*) FROM ABMultiValue WHERE property = 4 AND value LIKE '%@%'"),
              "12");
    EXPECT_EQ(Count(kContactImages, "ABFullSizeImage"), "4");
    EXPECT_EQ(Value(kContactImages,
                    "SELECT count(*) FROM ABThumbnailImage WHERE hex(substr(data, 1, 3)) = 'FFD8FF'"),
              "4");
    // Those who write messages are among the contacts.
    EXPECT_EQ(
        Query(FilePath(kMessages), "SELECT id FROM handle WHERE ROWID = 1"),
        Query(FilePath(kContacts), "SELECT value FROM ABMultiValue WHERE record_id = 1 AND property = 3"));
}

TEST_P(Contents, HasPhotosThatLookLikePictures) {
    for (int i = 1; i <= 6; ++i) {
        const std::string path = "Media/DCIM/100APPLE/IMG_000" + std::to_string(i) + ".JPG";
        const std::string bytes = ReadWholeFile(BackupPath(PlaceOf("CameraRollDomain", path)));
        EXPECT_EQ(bytes.size(), 300'000U);
        EXPECT_THAT(bytes, StartsWith("\xFF\xD8\xFF\xE0"));
        EXPECT_THAT(bytes, EndsWith("\xFF\xD9"));
    }
}

TEST_P(Contents, HasSettingsThatArePropertyLists) {
    int settings = 0;
    for (const ListedEntry& entry : ReadCatalogue(BackupPath())) {
        if (entry.flags != 1 || entry.path.compare(0, 20, "Library/Preferences/") != 0) continue;
        EXPECT_THAT(ReadPlist(BackupPath(PlaceOf(entry.domain, entry.path))),
                    testing::Contains(testing::Key("DeviceName")));
        ++settings;
    }
    EXPECT_GE(settings, 10);
}
