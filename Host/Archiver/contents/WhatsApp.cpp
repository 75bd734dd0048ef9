#include <algorithm>
#include <cstdint>
#include <string>

#include "Host/Archiver/contents/Contents.h"
#include "Host/Archiver/contents/People.h"
#include "Host/Archiver/contents/Random.h"
#include "Host/Archiver/contents/Turns.h"

namespace krutein {
namespace {

constexpr char kDomain[] = "AppDomainGroup-group.net.whatsapp.WhatsApp.shared";

constexpr char kSchema[] = R"(
    CREATE TABLE Z_METADATA (Z_VERSION INTEGER PRIMARY KEY, Z_UUID VARCHAR(255), Z_PLIST BLOB);
    CREATE TABLE Z_PRIMARYKEY (Z_ENT INTEGER PRIMARY KEY, Z_NAME VARCHAR, Z_SUPER INTEGER, Z_MAX INTEGER);
    CREATE TABLE ZWACHATSESSION (Z_PK INTEGER PRIMARY KEY, Z_ENT INTEGER, Z_OPT INTEGER,
        ZMESSAGECOUNTER INTEGER, ZUNREADCOUNT INTEGER, ZSESSIONTYPE INTEGER, ZREMOVED INTEGER,
        ZLASTMESSAGE INTEGER, ZLASTMESSAGEDATE TIMESTAMP, ZCONTACTJID VARCHAR, ZPARTNERNAME VARCHAR);
    CREATE TABLE ZWAMESSAGE (Z_PK INTEGER PRIMARY KEY, Z_ENT INTEGER, Z_OPT INTEGER, ZISFROMME INTEGER,
        ZMESSAGESTATUS INTEGER, ZMESSAGETYPE INTEGER, ZSORT INTEGER, ZCHATSESSION INTEGER,
        ZMEDIAITEM INTEGER, ZMESSAGEDATE TIMESTAMP, ZSENTDATE TIMESTAMP, ZFROMJID VARCHAR, ZTOJID VARCHAR,
        ZPUSHNAME VARCHAR, ZSTANZAID VARCHAR, ZTEXT VARCHAR);
    CREATE TABLE ZWAMEDIAITEM (Z_PK INTEGER PRIMARY KEY, Z_ENT INTEGER, Z_OPT INTEGER, ZFILESIZE INTEGER,
        ZMESSAGE INTEGER, ZMEDIALOCALPATH VARCHAR, ZTITLE VARCHAR, ZVCARDSTRING VARCHAR);
    CREATE INDEX ZWAMESSAGE_ZCHATSESSION_INDEX ON ZWAMESSAGE (ZCHATSESSION);
    CREATE INDEX ZWAMEDIAITEM_ZMESSAGE_INDEX ON ZWAMEDIAITEM (ZMESSAGE);)";

constexpr std::int64_t kSessionEntity = 4;
constexpr std::int64_t kMediaEntity = 8;
constexpr std::int64_t kMessageEntity = 9;

constexpr std::int64_t kTextType = 0;
constexpr std::int64_t kPictureType = 1;

/// Some messages are pictures.
constexpr std::int64_t kMessagesPerPicture = 20;
constexpr std::int64_t kMaxPictures = 100;
constexpr std::int64_t kPictureBytes = 24 * std::int64_t{1024};

std::int64_t CountPictures(const SampleDevice& device) {
    return std::min(device.whatsApp.messages / kMessagesPerPicture, kMaxPictures);
}

std::string JidOf(std::int64_t chat) {
    return PersonAt(chat).phone.substr(1) + "@s.whatsapp.net";
}

/// Below the folder Message, from where the database counts.
std::string PicturePath(const SampleDevice& device, std::int64_t picture) {
    const std::int64_t chat = picture * kMessagesPerPicture % device.whatsApp.chats;
    Random random(device.udid + "whatsapp picture" + std::to_string(picture));
    const std::string outer = random.Hex(1);
    const std::string inner = random.Hex(1);
    return "Media/" + JidOf(chat) + "/" + outer + "/" + inner + "/" + random.Uuid() + ".jpg";
}

void FillMetadata(const SampleDevice& device, Database& database) {
    Statement metadata = database.Prepare("INSERT INTO Z_METADATA (Z_VERSION, Z_UUID) VALUES (1, ?)");
    metadata.Run(Random(device.udid + "whatsapp").Uuid());
    Statement entity = database.Prepare("INSERT INTO Z_PRIMARYKEY VALUES (?, ?, 0, ?)");
    entity.Run(kSessionEntity, std::string("WAChatSession"), device.whatsApp.chats);
    entity.Run(kMediaEntity, std::string("WAMediaItem"), CountPictures(device));
    entity.Run(kMessageEntity, std::string("WAMessage"), device.whatsApp.messages);
}

void FillSessions(const SampleDevice& device, Database& database) {
    Statement session = database.Prepare(
        "INSERT INTO ZWACHATSESSION (Z_PK, Z_ENT, Z_OPT, ZMESSAGECOUNTER, ZUNREADCOUNT, ZSESSIONTYPE, "
        "ZREMOVED, ZLASTMESSAGE, ZLASTMESSAGEDATE, ZCONTACTJID, ZPARTNERNAME) "
        "VALUES (?, ?, 1, ?, 0, 0, 0, ?, ?, ?, ?)");
    const Turns turns{device.whatsApp.messages, device.whatsApp.chats};
    for (std::int64_t chat = 0; chat < device.whatsApp.chats; ++chat) {
        const std::int64_t count = turns.CountIn(chat);
        const std::int64_t last = count == 0 ? 0 : turns.ThingIn(chat, count - 1) + 1;
        const std::int64_t date = last == 0 ? 0 : SecondsSince2001(MessageTime(last - 1));
        session.Run(chat + 1, kSessionEntity, count, last, date, JidOf(chat), PersonAt(chat).FullName());
    }
}

void FillMessages(const SampleDevice& device, Database& database) {
    Statement message = database.Prepare(
        "INSERT INTO ZWAMESSAGE (Z_PK, Z_ENT, Z_OPT, ZISFROMME, ZMESSAGESTATUS, ZMESSAGETYPE, ZSORT, "
        "ZCHATSESSION, ZMEDIAITEM, ZMESSAGEDATE, ZSENTDATE, ZFROMJID, ZTOJID, ZPUSHNAME, ZSTANZAID, ZTEXT) "
        "VALUES (?1, ?2, 1, ?3, 8, ?4, ?1, ?5, ?6, ?7, ?7, ?8, ?9, ?10, ?11, ?12)");
    Random random(device.udid + "whatsapp messages");
    const Turns turns{device.whatsApp.messages, device.whatsApp.chats};
    const std::int64_t pictures = CountPictures(device);
    for (std::int64_t i = 0; i < device.whatsApp.messages; ++i) {
        const std::int64_t chat = turns.GroupOf(i);
        const std::string jid = JidOf(chat);
        const std::int64_t fromMe = random.Below(2);
        const std::int64_t picture = i / kMessagesPerPicture;
        const bool isPicture = i % kMessagesPerPicture == 0 && picture < pictures;
        const std::string phrase = PhraseAt(random.Next());
        message.Run(i + 1, kMessageEntity, fromMe, isPicture ? kPictureType : kTextType, chat + 1,
                    isPicture ? picture + 1 : 0, SecondsSince2001(MessageTime(i)),
                    fromMe == 1 ? std::string() : jid, fromMe == 1 ? jid : std::string(),
                    PersonAt(chat).firstName, random.Hex(20), isPicture ? std::string() : phrase);
    }
}

void FillMedia(const SampleDevice& device, Database& database) {
    Statement media = database.Prepare(
        "INSERT INTO ZWAMEDIAITEM (Z_PK, Z_ENT, Z_OPT, ZFILESIZE, ZMESSAGE, ZMEDIALOCALPATH) "
        "VALUES (?, ?, 1, ?, ?, ?)");
    for (std::int64_t i = 0; i < CountPictures(device); ++i)
        media.Run(i + 1, kMediaEntity, kPictureBytes, i * kMessagesPerPicture + 1, PicturePath(device, i));
}

}  // namespace

void PlayWhatsApp(const SampleDevice& device, ContentReceiver& receiver) {
    if (device.whatsApp.chats == 0) return;
    receiver.OnDatabase({kDomain, "ChatStorage.sqlite"}, [&](Database& database) {
        database.Execute(kSchema);
        FillMetadata(device, database);
        FillSessions(device, database);
        FillMessages(device, database);
        FillMedia(device, database);
    });
    for (std::int64_t i = 0; i < CountPictures(device); ++i) {
        const std::string path = PicturePath(device, i);
        receiver.OnFile({kDomain, "Message/" + path},
                        FileBytes(FileBytes::Kind::kPicture, kPictureBytes, SeedOf(path)));
    }
    receiver.OnFile({"AppDomain-net.whatsapp.WhatsApp", "Documents/contacts.txt"},
                    FileBytes(FileBytes::Kind::kText, 1000, SeedOf(device.udid)));
}

}  // namespace krutein
