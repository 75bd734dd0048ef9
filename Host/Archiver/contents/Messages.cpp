#include <cstdint>
#include <string>

#include "Host/Archiver/contents/Contents.h"
#include "Host/Archiver/contents/People.h"
#include "Host/Archiver/contents/Random.h"
#include "Host/Archiver/contents/Turns.h"

namespace krutein {
namespace {

constexpr char kSchema[] = R"(
    CREATE TABLE handle (ROWID INTEGER PRIMARY KEY AUTOINCREMENT, id TEXT NOT NULL, country TEXT,
        service TEXT NOT NULL, uncanonicalized_id TEXT, UNIQUE (id, service));
    CREATE TABLE chat (ROWID INTEGER PRIMARY KEY AUTOINCREMENT, guid TEXT UNIQUE NOT NULL, style INTEGER,
        state INTEGER, account_id TEXT, chat_identifier TEXT, service_name TEXT, room_name TEXT,
        account_login TEXT, is_archived INTEGER DEFAULT 0, last_addressed_handle TEXT, display_name TEXT);
    CREATE TABLE message (ROWID INTEGER PRIMARY KEY AUTOINCREMENT, guid TEXT UNIQUE NOT NULL, text TEXT,
        replace INTEGER DEFAULT 0, handle_id INTEGER DEFAULT 0, subject TEXT, country TEXT,
        attributedBody BLOB, version INTEGER DEFAULT 0, type INTEGER DEFAULT 0, service TEXT, account TEXT,
        error INTEGER DEFAULT 0, date INTEGER, date_read INTEGER, date_delivered INTEGER,
        is_delivered INTEGER DEFAULT 0, is_finished INTEGER DEFAULT 0, is_from_me INTEGER DEFAULT 0,
        is_empty INTEGER DEFAULT 0, is_read INTEGER DEFAULT 0, is_sent INTEGER DEFAULT 0,
        is_system_message INTEGER DEFAULT 0, cache_has_attachments INTEGER DEFAULT 0, cache_roomnames TEXT,
        item_type INTEGER DEFAULT 0, group_title TEXT);
    CREATE TABLE attachment (ROWID INTEGER PRIMARY KEY AUTOINCREMENT, guid TEXT UNIQUE NOT NULL,
        created_date INTEGER DEFAULT 0, start_date INTEGER DEFAULT 0, filename TEXT, uti TEXT, mime_type TEXT,
        transfer_state INTEGER DEFAULT 0, is_outgoing INTEGER DEFAULT 0, transfer_name TEXT,
        total_bytes INTEGER DEFAULT 0);
    CREATE TABLE chat_handle_join (chat_id INTEGER, handle_id INTEGER, UNIQUE (chat_id, handle_id));
    CREATE TABLE chat_message_join (chat_id INTEGER, message_id INTEGER, message_date INTEGER DEFAULT 0,
        PRIMARY KEY (chat_id, message_id));
    CREATE TABLE message_attachment_join (message_id INTEGER, attachment_id INTEGER,
        UNIQUE (message_id, attachment_id));
    CREATE INDEX message_idx_handle ON message (handle_id, date);)";

constexpr char kAttachmentsFolder[] = "Library/SMS/Attachments/";
/// A message that is an attachment and nothing else holds this character in its place (U+FFFC).
constexpr char kAttachmentText[] = "\xEF\xBF\xBC";

constexpr std::int64_t kPairStyle = 45;
constexpr std::int64_t kGroupStyle = 43;
constexpr std::int64_t kChatsPerGroup = 5;
constexpr std::int64_t kGroupMembers = 3;
constexpr std::int64_t kReceivedState = 5;
constexpr std::int64_t kNanoseconds = 1'000'000'000;

std::int64_t DateOf(std::int64_t message) {
    return SecondsSince2001(MessageTime(message)) * kNanoseconds;
}

/// Every fifth chat has the people of the two before it as further members.
bool IsGroup(std::int64_t chat) {
    return chat % kChatsPerGroup == kChatsPerGroup - 1;
}

struct Attachment {
    std::string guid;
    std::string name;
    std::string path;
};

/// What both the database and the file itself follow from.
Attachment AttachmentAt(const SampleDevice& device, std::int64_t index) {
    Random random(device.udid + "attachment" + std::to_string(index));
    Attachment attachment;
    attachment.guid = random.Uuid();
    attachment.name = PictureName(index + 1);
    const std::string outer = random.Hex(2);
    const std::string inner = Padded(random.Below(16), 2);
    const std::string folder = outer + "/" + inner + "/" + attachment.guid + "/";
    attachment.path = kAttachmentsFolder + folder + attachment.name;
    return attachment;
}

void FillChats(const SampleDevice& device, Database& database) {
    Statement handle = database.Prepare(
        "INSERT INTO handle (ROWID, id, country, service, uncanonicalized_id) VALUES (?, ?, 'us', ?, ?)");
    Statement chat = database.Prepare(
        "INSERT INTO chat (ROWID, guid, style, state, chat_identifier, service_name, room_name, "
        "display_name) "
        "VALUES (?, ?, ?, 3, ?, ?, ?, ?)");
    Statement member = database.Prepare("INSERT INTO chat_handle_join (chat_id, handle_id) VALUES (?, ?)");
    const std::string service = "iMessage";
    for (std::int64_t i = 0; i < device.messages.chats; ++i) {
        const std::string phone = PersonAt(i).phone;
        const std::int64_t id = i + 1;
        const std::string room = "chat" + Padded(id, 9);
        handle.Run(id, phone, service, phone);
        member.Run(id, id);
        if (!IsGroup(i)) {
            chat.Run(id, "iMessage;-;" + phone, kPairStyle, phone, service, nullptr, std::string());
            continue;
        }
        chat.Run(id, "iMessage;+;" + room, kGroupStyle, room, service, room, "Group " + std::to_string(id));
        for (std::int64_t other = 1; other < kGroupMembers; ++other)
            member.Run(id, id - other);
    }
}

/// Writes messages in their order in time, and with them the attachments, which are spread over them evenly.
class MessageTables {
 public:
    MessageTables(const SampleDevice& device, Database& database)
        : m_device(device),
          m_random(device.udid + "messages"),
          m_message(database.Prepare(
              "INSERT INTO message (ROWID, guid, text, handle_id, service, date, date_read, is_delivered, "
              "is_finished, is_from_me, is_read, is_sent, cache_has_attachments) "
              "VALUES (?, ?, ?, ?, 'iMessage', ?, ?, 1, 1, ?, 1, ?, ?)")),
          m_chat(database.Prepare(
              "INSERT INTO chat_message_join (chat_id, message_id, message_date) VALUES (?, ?, ?)")),
          m_attachment(database.Prepare(
              "INSERT INTO attachment (ROWID, guid, created_date, filename, uti, mime_type, transfer_state, "
              "is_outgoing, transfer_name, total_bytes) VALUES (?, ?, ?, ?, 'public.jpeg', 'image/jpeg', ?, "
              "?, "
              "?, ?)")),
          m_join(database.Prepare(
              "INSERT INTO message_attachment_join (message_id, attachment_id) VALUES (?, ?)")) {}

    void Fill() {
        for (std::int64_t i = 0; i < m_device.messages.count; ++i)
            Add(i);
    }

 private:
    bool HasAttachment(std::int64_t message) const {
        const SampleDevice::Messages& all = m_device.messages;
        return m_attachments < all.attachments && message == m_attachments * all.count / all.attachments;
    }

    void Add(std::int64_t index) {
        const std::int64_t id = index + 1;
        const std::int64_t date = DateOf(index);
        const std::int64_t chat = Turns{m_device.messages.count, m_device.messages.chats}.GroupOf(index) + 1;
        const std::int64_t fromMe = m_random.Below(2);
        const bool attached = HasAttachment(index);
        const std::string text = attached ? kAttachmentText : PhraseAt(m_random.Next());
        // What the owner writes has no sender.
        const std::int64_t sender = fromMe == 1 ? 0 : chat;
        const std::int64_t read = date + kNanoseconds;
        const std::int64_t attachments = attached ? 1 : 0;
        m_message.Run(id, m_random.Uuid(), text, sender, date, read, fromMe, fromMe, attachments);
        m_chat.Run(chat, id, date);
        if (attached) AddAttachment(id, date, fromMe);
    }

    void AddAttachment(std::int64_t message, std::int64_t date, std::int64_t fromMe) {
        const Attachment attachment = AttachmentAt(m_device, m_attachments);
        const std::int64_t id = ++m_attachments;
        m_attachment.Run(id, attachment.guid, date / kNanoseconds, "~/" + attachment.path, kReceivedState,
                         fromMe, attachment.name, m_device.messages.attachmentBytes);
        m_join.Run(message, id);
    }

    const SampleDevice& m_device;
    Random m_random;
    Statement m_message;
    Statement m_chat;
    Statement m_attachment;
    Statement m_join;
    std::int64_t m_attachments = 0;  ///< written so far
};

}  // namespace

void PlayMessages(const SampleDevice& device, ContentReceiver& receiver) {
    if (device.messages.chats == 0) return;
    receiver.OnDatabase({kHomeDomain, "Library/SMS/sms.db"}, [&](Database& database) {
        database.Execute(kSchema);
        FillChats(device, database);
        MessageTables(device, database).Fill();
    });
    for (std::int64_t i = 0; i < device.messages.attachments; ++i) {
        const Attachment attachment = AttachmentAt(device, i);
        receiver.OnFile(
            {kMediaDomain, attachment.path},
            FileBytes(FileBytes::Kind::kPicture, device.messages.attachmentBytes, SeedOf(attachment.guid)));
    }
}

}  // namespace krutein
