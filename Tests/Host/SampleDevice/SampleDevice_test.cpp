#include "Host/SampleDevice/SampleDevice.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <string>
#include <utility>

#include "Tests/support/TemporaryFolder.h"

using krutein::LoadSampleDevice;
using krutein::SampleDevice;
using krutein::SampleDeviceError;
using nlohmann::json;
using testing::StartsWith;

namespace {

const json& GoodDescription() {
    static const json description = json::parse(R"({
        "udid": "abc-1", "name": "A phone", "productType": "iPhone14,5", "systemVersion": "17.4.1",
        "buildVersion": "21E236", "serialNumber": "S1", "phoneNumber": "+1 555 010 0001",
        "disk": {"totalBytes": 100000, "availableBytes": 400},
        "contents": {
            "photos": {"count": 1, "bytesEach": 2},
            "messages": {"chats": 3, "count": 40, "attachments": 5, "attachmentBytes": 6},
            "whatsapp": {"chats": 7, "messages": 8},
            "wechat": {"accounts": 9, "chats": 10, "messages": 11},
            "contacts": {"count": 13, "images": 12},
            "other": {"count": 14, "bytesEach": 15}
        }})");
    return description;
}

class Description : public testing::Test {
 protected:
    SampleDevice Load(const std::string& text) const {
        return LoadSampleDevice(m_folder.Write("abc-1.json", text));
    }

    /// What is said of a description that cannot be used, without the path that it begins with.
    std::string ErrorOf(const std::string& text) const {
        try {
            Load(text);
        } catch (const SampleDeviceError& error) {
            const std::string path = m_folder.Path("abc-1.json") + ": ";
            EXPECT_THAT(error.what(), StartsWith(path));
            return std::string(error.what()).substr(path.size());
        }
        return "no error";
    }

    TemporaryFolder m_folder;
};

/// A good description in which one place has another value.
struct Change {
    const char* place;
    const char* value;
    const char* error;
};

class BadDescription : public Description, public testing::WithParamInterface<Change> {};

}  // namespace

TEST_F(Description, HasTheFactsOfTheDevice) {
    const SampleDevice device = Load(GoodDescription().dump());
    EXPECT_EQ(device.udid, "abc-1");
    EXPECT_EQ(device.name, "A phone");
    EXPECT_EQ(device.productType, "iPhone14,5");
    EXPECT_EQ(device.systemVersion, "17.4.1");
    EXPECT_EQ(device.MajorVersion(), 17);
    EXPECT_EQ(device.buildVersion, "21E236");
    EXPECT_EQ(device.serialNumber, "S1");
    EXPECT_EQ(device.phoneNumber, "+1 555 010 0001");
    EXPECT_EQ(device.disk.totalBytes, 100000);
    EXPECT_EQ(device.disk.availableBytes, 400);
}

TEST_F(Description, HasTheContents) {
    const SampleDevice device = Load(GoodDescription().dump());
    EXPECT_EQ(device.photos.count, 1);
    EXPECT_EQ(device.photos.bytesEach, 2);
    EXPECT_EQ(device.messages.chats, 3);
    EXPECT_EQ(device.messages.count, 40);
    EXPECT_EQ(device.messages.attachments, 5);
    EXPECT_EQ(device.messages.attachmentBytes, 6);
    EXPECT_EQ(device.whatsApp.chats, 7);
    EXPECT_EQ(device.whatsApp.messages, 8);
    EXPECT_EQ(device.weChat.accounts, 9);
    EXPECT_EQ(device.weChat.chats, 10);
    EXPECT_EQ(device.weChat.messages, 11);
    EXPECT_EQ(device.contacts.count, 13);
    EXPECT_EQ(device.contacts.images, 12);
    EXPECT_EQ(device.other.count, 14);
    EXPECT_EQ(device.other.bytesEach, 15);
}

TEST_F(Description, CountsMissingContentsAsNone) {
    json description = GoodDescription();
    description["contents"].erase("messages");
    const SampleDevice partial = Load(description.dump());
    EXPECT_EQ(partial.messages.chats, 0);
    EXPECT_EQ(partial.messages.attachmentBytes, 0);
    EXPECT_EQ(partial.photos.count, 1);
    description.erase("contents");
    description.erase("phoneNumber");
    const SampleDevice bare = Load(description.dump());
    EXPECT_EQ(bare.photos.count, 0);
    EXPECT_EQ(bare.weChat.accounts, 0);
    EXPECT_EQ(bare.phoneNumber, "");
}

TEST_F(Description, TellsTheMajorVersion) {
    SampleDevice device;
    for (const auto& [version, major] : {std::pair("9.3.5", 9), {"10.0", 10}, {"17", 17}}) {
        device.systemVersion = version;
        EXPECT_EQ(device.MajorVersion(), major);
    }
}

TEST_F(Description, MustHaveAllFacts) {
    for (const char* const field :
         {"udid", "name", "productType", "systemVersion", "buildVersion", "serialNumber", "disk"}) {
        json description = GoodDescription();
        description.erase(field);
        EXPECT_EQ(ErrorOf(description.dump()), std::string(field) + ": is missing");
    }
    json description = GoodDescription();
    description["contents"]["wechat"].erase("chats");
    EXPECT_EQ(ErrorOf(description.dump()), "contents.wechat.chats: is missing");
}

TEST_F(Description, MustBeNamedForItsDevice) {
    const std::string path = m_folder.Write("another.json", GoodDescription().dump());
    try {
        LoadSampleDevice(path);
        FAIL() << "was loaded";
    } catch (const SampleDeviceError& error) {
        EXPECT_EQ(error.what(), path + ": udid: is not what the file is named for");
    }
}

TEST_F(Description, MustBeAFileThatCanBeRead) {
    EXPECT_THROW(LoadSampleDevice(m_folder.Path("missing.json")), SampleDeviceError);
    EXPECT_THROW(LoadSampleDevice(m_folder.Path()), SampleDeviceError);
}

TEST_F(Description, MustNotBeEndless) {
    EXPECT_EQ(ErrorOf(GoodDescription().dump() + std::string(2'000'000, ' ')), "is larger than 1 MiB");
}

TEST_F(Description, MustBeJson) {
    for (const char* const text : {"", "{", "nonsense", "{\"udid\": \"\xFF\"}"})
        EXPECT_THAT(ErrorOf(text), StartsWith("is no JSON: "));
    for (const char* const text : {"[]", "null", "7"})
        EXPECT_EQ(ErrorOf(text), "must be an object");
}

TEST_P(BadDescription, IsRefusedWithFieldAndReason) {
    json description = GoodDescription();
    description[json::json_pointer(GetParam().place)] = json::parse(GetParam().value);
    EXPECT_EQ(ErrorOf(description.dump()), GetParam().error);
}

INSTANTIATE_TEST_SUITE_P(
    Fields, BadDescription,
    testing::Values(Change{"/name", "7", "name: must be a text"},
                    Change{"/name", "\"\"", "name: must not be empty"},
                    Change{"/name", "\"a\\nb\"", "name: must not hold control characters"},
                    Change{"/udid", "\"../x\"", "udid: must be up to 64 letters, digits and hyphens"},
                    Change{"/udid", "\"abc_1\"", "udid: must be up to 64 letters, digits and hyphens"},
                    Change{"/disk", "5", "disk: must be an object"},
                    Change{"/disk/availableBytes", "100001",
                           "disk.availableBytes: must be a whole number from 0 to 100000"},
                    Change{"/disk/totalBytes", "1e30",
                           "disk.totalBytes: must be a whole number from 0 to 17592186044416"},
                    Change{"/disk/free", "5", "disk.free: no such field"},
                    Change{"/contents", "[]", "contents: must be an object"},
                    Change{"/contents/photo", "{}", "contents.photo: no such field"},
                    Change{"/contents/photos", "null", "contents.photos: must be an object"},
                    Change{"/contents/photos/size", "1", "contents.photos.size: no such field"},
                    Change{"/contents/photos/count", "-1",
                           "contents.photos.count: must be a whole number from 0 to 1000000"},
                    Change{"/contents/photos/count", "1.5",
                           "contents.photos.count: must be a whole number from 0 to 1000000"},
                    Change{"/contents/photos/count", "\"1\"",
                           "contents.photos.count: must be a whole number from 0 to 1000000"},
                    Change{"/contents/other/count", "1000001",
                           "contents.other.count: must be a whole number from 0 to 1000000"},
                    Change{"/contents/other/bytesEach", "18446744073709551615",
                           "contents.other.bytesEach: must be a whole number from 0 to 1073741824"},
                    Change{"/contents/other/bytesEach", "50000",
                           "contents: has more bytes than disk.totalBytes"},
                    Change{"/contents/messages/chats", "0",
                           "contents.messages.chats: must not be 0 when there are messages"},
                    Change{"/contents/messages/attachments", "41",
                           "contents.messages.attachments: must be a whole number from 0 to 40"},
                    Change{"/contents/whatsapp/chats", "0",
                           "contents.whatsapp.chats: must not be 0 when there are messages"},
                    Change{"/contents/wechat/accounts", "0",
                           "contents.wechat.accounts: must not be 0 when there are chats"},
                    Change{"/contents/contacts/images", "14",
                           "contents.contacts.images: must be a whole number from 0 to 13"},
                    Change{"/owner", "\"me\"", "owner: no such field"}));

class BadVersion : public Description, public testing::WithParamInterface<const char*> {};

TEST_P(BadVersion, IsRefused) {
    json description = GoodDescription();
    description["systemVersion"] = GetParam();
    EXPECT_EQ(ErrorOf(description.dump()),
              "systemVersion: must be one to three numbers with dots, such as 17.4.1");
}

INSTANTIATE_TEST_SUITE_P(Texts, BadVersion,
                         testing::Values("17.4.1.2", "17.", ".4", "17..1", "1234", "17a", "-1", "beta",
                                         "99999999999999999999"));
