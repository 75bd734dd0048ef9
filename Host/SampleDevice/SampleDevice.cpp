#include "Host/SampleDevice/SampleDevice.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>
#include <set>
#include <system_error>

namespace krutein {
namespace {

using nlohmann::json;

// Bounds far above any real device, so low that no sum or product of them overflows.
constexpr std::int64_t kMaxFiles = 1'000'000;
constexpr std::int64_t kMaxMessages = 10'000'000;
constexpr std::int64_t kMaxChats = 10'000;
constexpr std::int64_t kMaxAccounts = 16;
constexpr std::int64_t kMaxFileBytes = std::int64_t{1} << 30;  // 1 GiB
constexpr std::int64_t kMaxDiskBytes = std::int64_t{1} << 44;  // 16 TiB
constexpr std::size_t kMaxDescriptionBytes = std::size_t{1} << 20;
constexpr std::size_t kMaxUdidChars = 64;
constexpr std::size_t kMaxTextBytes = 200;
constexpr std::size_t kMaxVersionChars = 11;  // "999.999.999"

constexpr char kDigits[] = "0123456789";
constexpr char kUdidChars[] = "0123456789-ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz";

[[noreturn]] void Refuse(const std::string& path, const std::string& field, const std::string& reason) {
    throw SampleDeviceError(path + ": " + (field.empty() ? "" : field + ": ") + reason);
}

/// One JSON object of the description. It remembers which members were asked for, to find the others.
class Section {
 public:
    /// \param object  null for a section that is not there: all its numbers are zero.
    Section(const std::string& path, const std::string& field, const json* object)
        : m_path(path), m_field(field), m_object(object) {
        if (object != nullptr && !object->is_object()) Refuse(path, field, "must be an object");
    }

    std::string Text(const std::string& name) { return TextOf(name, Required(name)); }

    std::string OptionalText(const std::string& name) {
        const json* const member = Member(name);
        return member == nullptr ? std::string() : TextOf(name, *member);
    }

    /// Required, unless the whole section is missing.
    std::int64_t Number(const std::string& name, std::int64_t max) {
        if (m_object == nullptr) return 0;
        const json& member = Required(name);
        if (!member.is_number_unsigned() || member.get<std::uint64_t>() > static_cast<std::uint64_t>(max)) {
            Refuse(m_path, FieldOf(name), "must be a whole number from 0 to " + std::to_string(max));
        }
        return member.get<std::int64_t>();
    }

    Section RequiredSection(const std::string& name) {
        return Section(m_path, FieldOf(name), &Required(name));
    }
    Section OptionalSection(const std::string& name) { return Section(m_path, FieldOf(name), Member(name)); }

    [[noreturn]] void RefuseField(const std::string& name, const std::string& reason) const {
        Refuse(m_path, FieldOf(name), reason);
    }

    /// Refuses members that nobody asked for.
    void RefuseOthers() const {
        if (m_object == nullptr) return;
        for (const auto& item : m_object->items()) {
            if (m_asked.count(item.key()) == 0) RefuseField(item.key(), "no such field");
        }
    }

 private:
    const json* Member(const std::string& name) {
        m_asked.insert(name);
        if (m_object == nullptr) return nullptr;
        const auto found = m_object->find(name);
        return found == m_object->end() ? nullptr : &*found;
    }

    const json& Required(const std::string& name) {
        const json* const member = Member(name);
        if (member == nullptr) RefuseField(name, "is missing");
        return *member;
    }

    std::string TextOf(const std::string& name, const json& member) const {
        if (!member.is_string()) RefuseField(name, "must be a text");
        auto text = member.get<std::string>();
        if (text.empty()) RefuseField(name, "must not be empty");
        if (text.size() > kMaxTextBytes) {
            RefuseField(name, "must not be longer than " + std::to_string(kMaxTextBytes) + " bytes");
        }
        const auto isControl = [](unsigned char c) { return c < 0x20 || c == 0x7F; };
        if (std::any_of(text.begin(), text.end(), isControl)) {
            RefuseField(name, "must not hold control characters");
        }
        return text;
    }

    std::string FieldOf(const std::string& name) const {
        return m_field.empty() ? name : m_field + "." + name;
    }

    std::string m_path;
    std::string m_field;
    const json* m_object;
    std::set<std::string> m_asked;
};

json ReadJson(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file) Refuse(path, "", "cannot be read: " + std::generic_category().message(errno));
    std::string text(kMaxDescriptionBytes + 1, '\0');
    file.read(text.data(), static_cast<std::streamsize>(text.size()));
    if (file.bad()) Refuse(path, "", "cannot be read");
    text.resize(static_cast<std::size_t>(file.gcount()));
    if (text.size() > kMaxDescriptionBytes) Refuse(path, "", "is larger than 1 MiB");
    try {
        return json::parse(text);
    } catch (const json::exception& error) {
        Refuse(path, "", std::string("is no JSON: ") + error.what());
    }
}

/// The file's name without folder and extension.
std::string StemOf(const std::string& path) {
    const std::string name = path.substr(path.rfind('/') + 1);
    return name.substr(0, name.rfind('.'));
}

/// One to three numbers of one to three digits.
bool IsVersion(const std::string& text) {
    if (text.size() > kMaxVersionChars) return false;
    int numbers = 0;
    std::size_t begin = 0;
    for (;;) {
        const std::size_t end = std::min(text.find('.', begin), text.size());
        const std::string number = text.substr(begin, end - begin);
        ++numbers;
        if (number.empty() || number.size() > 3 || numbers > 3) return false;
        if (number.find_first_not_of(kDigits) != std::string::npos) return false;
        if (end == text.size()) return true;
        begin = end + 1;
    }
}

void ReadFacts(Section& root, SampleDevice& device) {
    device.udid = root.Text("udid");
    if (device.udid.size() > kMaxUdidChars ||
        device.udid.find_first_not_of(kUdidChars) != std::string::npos) {
        root.RefuseField("udid", "must be up to 64 letters, digits and hyphens");
    }
    device.name = root.Text("name");
    device.productType = root.Text("productType");
    device.systemVersion = root.Text("systemVersion");
    if (!IsVersion(device.systemVersion)) {
        root.RefuseField("systemVersion", "must be one to three numbers with dots, such as 17.4.1");
    }
    device.buildVersion = root.Text("buildVersion");
    device.serialNumber = root.Text("serialNumber");
    device.phoneNumber = root.OptionalText("phoneNumber");

    Section disk = root.RequiredSection("disk");
    device.disk.totalBytes = disk.Number("totalBytes", kMaxDiskBytes);
    device.disk.availableBytes = disk.Number("availableBytes", device.disk.totalBytes);
    disk.RefuseOthers();
}

SampleDevice::Files ReadFiles(Section section) {
    SampleDevice::Files files;
    files.count = section.Number("count", kMaxFiles);
    files.bytesEach = section.Number("bytesEach", kMaxFileBytes);
    section.RefuseOthers();
    return files;
}

/// Messages without a chat to stand in.
void CheckChats(const Section& section, std::int64_t messages, std::int64_t chats) {
    if (messages > 0 && chats == 0) section.RefuseField("chats", "must not be 0 when there are messages");
}

SampleDevice::Messages ReadMessages(Section section) {
    SampleDevice::Messages messages;
    messages.chats = section.Number("chats", kMaxChats);
    messages.count = section.Number("count", kMaxMessages);
    messages.attachments = section.Number("attachments", std::min(messages.count, kMaxFiles));
    messages.attachmentBytes = section.Number("attachmentBytes", kMaxFileBytes);
    CheckChats(section, messages.count, messages.chats);
    section.RefuseOthers();
    return messages;
}

SampleDevice::WhatsApp ReadWhatsApp(Section section) {
    SampleDevice::WhatsApp whatsApp;
    whatsApp.chats = section.Number("chats", kMaxChats);
    whatsApp.messages = section.Number("messages", kMaxMessages);
    CheckChats(section, whatsApp.messages, whatsApp.chats);
    section.RefuseOthers();
    return whatsApp;
}

SampleDevice::WeChat ReadWeChat(Section section) {
    SampleDevice::WeChat weChat;
    weChat.accounts = section.Number("accounts", kMaxAccounts);
    weChat.chats = section.Number("chats", kMaxChats);
    weChat.messages = section.Number("messages", kMaxMessages);
    CheckChats(section, weChat.messages, weChat.chats);
    if (weChat.chats > 0 && weChat.accounts == 0) {
        section.RefuseField("accounts", "must not be 0 when there are chats");
    }
    section.RefuseOthers();
    return weChat;
}

SampleDevice::Contacts ReadContacts(Section section) {
    SampleDevice::Contacts contacts;
    contacts.count = section.Number("count", kMaxFiles);
    contacts.images = section.Number("images", contacts.count);
    section.RefuseOthers();
    return contacts;
}

void ReadContents(Section contents, SampleDevice& device) {
    device.photos = ReadFiles(contents.OptionalSection("photos"));
    device.messages = ReadMessages(contents.OptionalSection("messages"));
    device.whatsApp = ReadWhatsApp(contents.OptionalSection("whatsapp"));
    device.weChat = ReadWeChat(contents.OptionalSection("wechat"));
    device.contacts = ReadContacts(contents.OptionalSection("contacts"));
    device.other = ReadFiles(contents.OptionalSection("other"));
    contents.RefuseOthers();
}

/// The bytes of all files whose size the description says.
std::int64_t StatedBytes(const SampleDevice& device) {
    return device.photos.count * device.photos.bytesEach +
           device.messages.attachments * device.messages.attachmentBytes +
           device.other.count * device.other.bytesEach;
}

}  // namespace

int SampleDevice::MajorVersion() const {
    return static_cast<int>(std::strtol(systemVersion.c_str(), nullptr, 10));
}

SampleDevice LoadSampleDevice(const std::string& path) {
    const json description = ReadJson(path);
    SampleDevice device;
    Section root(path, "", &description);
    ReadFacts(root, device);
    if (device.udid != StemOf(path)) root.RefuseField("udid", "is not what the file is named for");
    ReadContents(root.OptionalSection("contents"), device);
    root.RefuseOthers();
    if (StatedBytes(device) > device.disk.totalBytes) {
        root.RefuseField("contents", "has more bytes than disk.totalBytes");
    }
    return device;
}

}  // namespace krutein
