// Backups that the sample tool and the library have made, looked into.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <nlohmann/json.hpp>

#include "Tests/Host/kruteinctl/HostBundle.h"
#include "Tests/Host/kruteinctl/Output.h"

namespace fs = std::filesystem;
using Json = nlohmann::json;

namespace {

class SampleInspectionTest : public testing::Test {
 protected:
    SampleInspectionTest() {
        host.HasDeviceWith(
            R"({"messages": {"chats": 4, "count": 30, "attachments": 3, "attachmentBytes": 500},
                               "whatsapp": {"chats": 3, "messages": 50},
                               "wechat": {"accounts": 2, "chats": 4, "messages": 20},
                               "contacts": {"count": 7, "images": 2},
                               "photos": {"count": 20, "bytesEach": 1000}})");
    }

    std::vector<Json> Look(const std::string& command, const std::string& backup) const {
        const Finished finished = host.Run({command, backup, "--json"});
        EXPECT_EQ(finished.code, 0) << command << " " << backup << "\n" << finished.output << finished.errors;
        return Objects(finished.output);
    }

    HostBundle host;
};

}  // namespace

TEST_F(SampleInspectionTest, AFullBackupIsWhole) {
    ASSERT_EQ(RunToEnd(host.Backup()).code, 0);
    const std::string backup = host.Backups() + "/" + HostBundle::kUdid;
    EXPECT_EQ(Look("verify", backup).back()["databases"], 6);
    EXPECT_EQ(Look("files", backup).back()["missing"], 0);
}

TEST_F(SampleInspectionTest, ATypedBackupHoldsWhatItsTypesNeed) {
    const Finished made = RunToEnd(host.Backup({"--types", "messages,wechat,contacts", "--json"}));
    ASSERT_EQ(made.code, 0) << made.errors;
    const std::string backup = Objects(made.output).back()["path"];
    EXPECT_EQ(Look("verify", backup).back()["types"], "messages, wechat, contacts");
    const std::vector<Json> shown = Look("show", fs::path(backup).parent_path().string());
    ASSERT_EQ(shown.size(), 5U);
    EXPECT_EQ(shown[0]["device_name"], "A phone for tests");
    EXPECT_EQ(shown[1]["databases"][0]["messages"], 30);
    EXPECT_EQ(shown[1]["databases"][0]["chats"], 4);
    EXPECT_EQ(shown[2]["databases"].size(), 2U);
    EXPECT_EQ(
        shown[2]["databases"][0]["messages"].get<int>() + shown[2]["databases"][1]["messages"].get<int>(),
        20);
    EXPECT_EQ(shown[3]["databases"][0]["contacts"], 7);
    EXPECT_EQ(shown[3]["databases"][1]["pictures"], 2);
    EXPECT_GT(Look("files", backup).back()["missing"], 20);
}
