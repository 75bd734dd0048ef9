#include "Tests/Module/BackupLib/JobFixture.h"

#include <filesystem>

#include "Tests/support/LogRecorder.h"

namespace fs = std::filesystem;

JobTest::JobTest() {
    ForgetLog();
}

void JobTest::Use(Layout wanted) {
    layout = wanted;
    device.majorVersion = wanted == Layout::kNew ? 17 : 9;
    device.version = wanted == Layout::kNew ? "17.4.1" : "9.3.5";
}

void JobTest::ToolMakes(BackupBuilder& backup) {
    tool.CopyBackup(backup.Write(layout)).ExitMessage(0);
}

int JobTest::Start(int type, int option) {
    std::string folder = destination.Path();
    return manager.StartBackupSafe(&device, folder, &callback, type, option);
}

std::string JobTest::JobFolder() const {
    std::string newest;
    for (const fs::directory_entry& type : fs::directory_iterator(destination.Path())) {
        for (const fs::directory_entry& job : fs::directory_iterator(type.path())) {
            newest = std::max(newest, job.path().string());
        }
    }
    return newest;
}

PhoneContent::PhoneContent(BackupBuilder& backup) {
    // cppcheck-suppress useInitializationList ; all are added in the order in which they stand here
    messages = backup.AddDatabase(
        "HomeDomain", "Library/SMS/sms.db",
        {"CREATE TABLE message (text)", "CREATE TABLE chat_message_join (chat_id, message_id)",
         "INSERT INTO message VALUES ('hello')", "INSERT INTO chat_message_join VALUES (1, 1)"});
    attachment = backup.Add("MediaDomain", "Library/SMS/Attachments/00/IMG_0001.JPG");
    const std::string whatsappDomain = "AppDomainGroup-group.net.whatsapp.WhatsApp.shared";
    whatsapp = backup.AddDatabase(
        whatsappDomain, "ChatStorage.sqlite",
        {"CREATE TABLE ZWAMESSAGE (ZTEXT)", "CREATE TABLE ZWACHATSESSION (ZPARTNERNAME)",
         "INSERT INTO ZWAMESSAGE VALUES ('hello')", "INSERT INTO ZWACHATSESSION VALUES ('Anna')"});
    whatsappMedia = backup.Add(whatsappDomain, "Message/Media/1.jpg");
    wechat = backup.AddDatabase("AppDomain-com.tencent.xin",
                                "Documents/0123456789abcdef0123456789abcdef/DB/MM.sqlite",
                                {"CREATE TABLE Chat_0123 (Message)", "CREATE TABLE Friend (name)"});
    wechatMedia =
        backup.Add("AppDomain-com.tencent.xin", "Documents/0123456789abcdef0123456789abcdef/Img/1.pic");
    contacts = backup.Add("HomeDomain", "Library/AddressBook/AddressBook.sqlitedb");
    contactImages = backup.Add("HomeDomain", "Library/AddressBook/AddressBookImages.sqlitedb");
    photo = backup.Add("CameraRollDomain", "Media/DCIM/100APPLE/IMG_0001.JPG");
    mail = backup.Add("HomeDomain", "Library/Mail/Grüße.mbox");
    backup.AddRow("HomeDomain", "Library/SMS");
    backup.AddRow("HomeDomain", "");
    backup.AddRow("", "");
}
