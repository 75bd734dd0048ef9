#include <algorithm>
#include <cstdint>
#include <string>

#include "Host/Archiver/contents/Contents.h"
#include "Host/Archiver/contents/People.h"
#include "Host/Archiver/contents/Random.h"
#include "Host/Archiver/contents/Turns.h"

namespace krutein {
namespace {

constexpr char kDomain[] = "AppDomain-com.tencent.xin";
constexpr std::size_t kIdDigits = 32;

constexpr std::int64_t kTextType = 1;
constexpr std::int64_t kPictureType = 3;
constexpr std::int64_t kReadStatus = 4;

/// The first message of some chats is a picture.
constexpr std::int64_t kMaxPictureChats = 10;
constexpr std::int64_t kPictureBytes = 16 * std::int64_t{1024};

/// The app names its folders and tables for hashes of user names.
std::string AccountId(const SampleDevice& device, std::int64_t account) {
    return Random(device.udid + "wechat account" + std::to_string(account)).Hex(kIdDigits);
}

std::string ChatId(const SampleDevice& device, std::int64_t chat) {
    return Random(device.udid + "wechat chat" + std::to_string(chat)).Hex(kIdDigits);
}

bool HasPicture(const SampleDevice& device, std::int64_t chat) {
    return chat < std::min(kMaxPictureChats, device.weChat.messages);
}

/// Chats go to the accounts in turn, as messages do to the chats.
std::int64_t AccountOf(const SampleDevice& device, std::int64_t chat) {
    return chat % device.weChat.accounts;
}

void FillChat(const SampleDevice& device, std::int64_t chat, Database& database) {
    const std::string table = "Chat_" + ChatId(device, chat);
    database.Execute("CREATE TABLE " + table +
                     " (TableVer INTEGER DEFAULT 1, MesLocalID INTEGER PRIMARY KEY, MesSvrID INTEGER, "
                     "CreateTime INTEGER, Message TEXT, Status INTEGER, ImgStatus INTEGER, Type INTEGER, "
                     "Des INTEGER)");
    Statement message = database.Prepare("INSERT INTO " + table +
                                         " (MesLocalID, MesSvrID, CreateTime, Message, Status, ImgStatus, "
                                         "Type, Des) VALUES (?, ?, ?, ?, ?, ?, ?, ?)");
    Random random(device.udid + table);
    const Turns turns{device.weChat.messages, device.weChat.chats};
    for (std::int64_t i = 0; i < turns.CountIn(chat); ++i) {
        const bool picture = i == 0 && HasPicture(device, chat);
        const std::int64_t number = turns.ThingIn(chat, i);
        const std::string text = picture ? "<msg><img/></msg>" : PhraseAt(random.Next());
        const std::int64_t imageStatus = picture ? 2 : 1;
        message.Run(i + 1, number + 1, MessageTime(number), text, kReadStatus, imageStatus,
                    picture ? kPictureType : kTextType, random.Below(2));
    }
}

void FillAccount(const SampleDevice& device, std::int64_t account, Database& database) {
    database.Execute(
        "CREATE TABLE Friend (UsrName TEXT PRIMARY KEY, NickName TEXT, Mobile TEXT, Type INTEGER)");
    Statement friends =
        database.Prepare("INSERT INTO Friend (UsrName, NickName, Mobile, Type) VALUES (?, ?, ?, 3)");
    for (std::int64_t chat = 0; chat < device.weChat.chats; ++chat) {
        if (AccountOf(device, chat) != account) continue;
        const Person person = PersonAt(chat);
        friends.Run("wxid_" + ChatId(device, chat).substr(0, 14), person.FullName(), person.phone);
        FillChat(device, chat, database);
    }
}

}  // namespace

void PlayWeChat(const SampleDevice& device, ContentReceiver& receiver) {
    for (std::int64_t account = 0; account < device.weChat.accounts; ++account) {
        const std::string folder = "Documents/" + AccountId(device, account) + "/";
        receiver.OnDatabase({kDomain, folder + "DB/MM.sqlite"},
                            [&](Database& database) { FillAccount(device, account, database); });
    }
    const std::int64_t pictureChats = std::min(kMaxPictureChats, device.weChat.chats);
    for (std::int64_t chat = 0; chat < pictureChats; ++chat) {
        if (!HasPicture(device, chat)) break;
        const std::string folder = "Documents/" + AccountId(device, AccountOf(device, chat)) + "/Img/";
        const std::string path = folder + ChatId(device, chat) + "/1.pic";
        receiver.OnFile({kDomain, path}, FileBytes(FileBytes::Kind::kPicture, kPictureBytes, SeedOf(path)));
    }
}

}  // namespace krutein
