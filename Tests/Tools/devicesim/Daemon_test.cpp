// The daemon's side of the protocol, asked byte by byte on a socket of its own.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>

#include "Tests/Tools/devicesim/SocketPair.h"
#include "Tests/support/TemporaryFolder.h"
#include "Tools/devicesim/Frames.h"
#include "Tools/devicesim/Simulator.h"

using namespace devicesim;
using testing::HasSubstr;

namespace {

constexpr char kDescription[] =
    R"({"udid": "abc-1", "name": "Ann's phone", "productType": "iPhone14,5", "systemVersion": "17.4.1",
        "buildVersion": "21E236", "serialNumber": "S1", "disk": {"totalBytes": 100, "availableBytes": 40}})";
constexpr std::uint64_t kSwappedLockdownPort = 32498;

class Daemon : public testing::Test {
 protected:
    void Start(const std::vector<std::string>& faults = {}) {
        Simulator::Settings settings{m_folder.Path("s"), m_folder.Path("devices"), {}};
        for (const std::string& fault : faults)
            settings.faults.Add(fault);
        m_folder.Write("devices/abc-1.json", kDescription);
        m_simulator = std::make_unique<Simulator>(settings);
        m_simulator->LookForDevices();
        m_simulator->Listen();
        m_client = ConnectTo(m_folder.Path("s"));
        ASSERT_NE(m_client, nullptr);
    }

    Plist Ask(const Plist& request) {
        std::optional<Plist> answer = AskDaemon(*m_client, request);
        EXPECT_TRUE(answer);
        return answer ? std::move(*answer) : Plist();
    }

    std::uint64_t ResultOf(const Plist& request) {
        const Plist answer = Ask(request);
        EXPECT_EQ(answer.Text("MessageType"), "Result");
        return answer.Number("Number").value_or(99);
    }

    static Plist Connect(std::uint64_t device, std::uint64_t port) {
        Plist request = Request("MessageType", "Connect");
        request.Set("DeviceID", device).Set("PortNumber", port);
        return request;
    }

    TemporaryFolder m_folder;
    std::unique_ptr<Simulator> m_simulator;
    std::unique_ptr<Connection> m_client;
};

}  // namespace

TEST_F(Daemon, ListsDevices) {
    Start();
    EXPECT_THAT(Ask(Request("MessageType", "ListDevices")).ToXml(), HasSubstr("<string>abc-1</string>"));
    // One connection may ask several times.
    EXPECT_TRUE(Ask(Request("MessageType", "ListDevices")).Has("DeviceList"));
}

TEST_F(Daemon, TellsItsIdentifier) {
    Start();
    const std::string buid = Ask(Request("MessageType", "ReadBUID")).Text("BUID");
    EXPECT_NE(buid, "");
    EXPECT_EQ(Ask(Request("MessageType", "ReadBUID")).Text("BUID"), buid);
}

TEST_F(Daemon, KeepsPairRecords) {
    Start({"unpaired"});
    Plist read = Request("MessageType", "ReadPairRecord");
    read.Set("PairRecordID", "abc-1");
    EXPECT_EQ(ResultOf(read), 2U);
    Plist save = Request("MessageType", "SavePairRecord");
    save.Set("PairRecordID", "abc-1").SetData("PairRecordData", "record");
    EXPECT_EQ(ResultOf(save), 0U);
    EXPECT_EQ(Ask(read).Data("PairRecordData"), "record");
    Plist remove = Request("MessageType", "DeletePairRecord");
    remove.Set("PairRecordID", "abc-1");
    EXPECT_EQ(ResultOf(remove), 0U);
    EXPECT_EQ(ResultOf(read), 2U);
    EXPECT_EQ(ResultOf(Request("MessageType", "SavePairRecord")), 1U);
}

TEST_F(Daemon, ConnectsWithTheLockdownService) {
    Start();
    EXPECT_EQ(ResultOf(Connect(1, kSwappedLockdownPort)), 0U);
    const std::optional<Plist> answer = AskService(*m_client, Request("Request", "QueryType"));
    ASSERT_TRUE(answer);
    EXPECT_EQ(answer->Text("Type"), "com.apple.mobile.lockdown");
}

TEST_F(Daemon, DoesNotConnectWithOtherDevicesOrPorts) {
    Start();
    EXPECT_EQ(ResultOf(Connect(2, kSwappedLockdownPort)), 2U);
    m_client = ConnectTo(m_folder.Path("s"));
    EXPECT_EQ(ResultOf(Connect(1, 1)), 3U);
    m_client = ConnectTo(m_folder.Path("s"));
    EXPECT_EQ(ResultOf(Request("MessageType", "Connect")), 2U);
}

TEST_F(Daemon, TellsListenersWhatComesAndGoes) {
    Start();
    EXPECT_EQ(ResultOf(Request("MessageType", "Listen")), 0U);
    EXPECT_EQ(ReadNotice(*m_client)->Text("MessageType"), "Attached");
    std::filesystem::remove(m_folder.Path("devices/abc-1.json"));
    m_simulator->LookForDevices();
    EXPECT_EQ(ReadNotice(*m_client)->Text("MessageType"), "Detached");
}

TEST_F(Daemon, RefusesUnknownRequestsAndGoesOn) {
    Start();
    EXPECT_EQ(ResultOf(Request("MessageType", "Dance")), 1U);
    EXPECT_EQ(ResultOf(Plist()), 1U);
    EXPECT_TRUE(Ask(Request("MessageType", "ListDevices")).Has("DeviceList"));
}

TEST_F(Daemon, RefusesOtherVersionsAndOtherBytes) {
    Start();
    std::string header = DaemonHeader(0, 9);
    header[4] = 0;
    m_client->Write(header);
    EXPECT_THAT(ReadToEnd(*m_client), HasSubstr("<integer>6</integer>"));
    m_client = ConnectTo(m_folder.Path("s"));
    m_client->Write(DaemonHeader(4, 9) + "what");
    EXPECT_THAT(ReadToEnd(*m_client), HasSubstr("<integer>1</integer>"));
}

TEST_F(Daemon, EndsAConnectionWhoseLengthCannotBe) {
    Start();
    m_client->Write(DaemonHeader(0xFFFFFF00, 1));
    EXPECT_EQ(ReadToEnd(*m_client), "");
}

TEST_F(Daemon, HasFaultsOfItsOwn) {
    Start({"half=ListDevices", "abc-1/half=ReadBUID"});
    EXPECT_FALSE(AskDaemon(*m_client, Request("MessageType", "ListDevices")));
    m_client = ConnectTo(m_folder.Path("s"));
    EXPECT_TRUE(Ask(Request("MessageType", "ReadBUID")).Has("BUID"));
}

TEST_F(Daemon, ReportsDescriptionsThatCannotBeUsed) {
    Start();
    m_folder.Write("devices/bad.json", "{");
    EXPECT_EQ(m_simulator->LookForDevices().size(), 1U);
    EXPECT_EQ(m_simulator->DeviceCount(), 1U);
}
