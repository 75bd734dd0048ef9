#include "Tools/devicesim/DeviceHub.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Tests/Tools/devicesim/SocketPair.h"

using namespace devicesim;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

class Hub : public testing::Test {
 protected:
    void Connected(const std::vector<std::string>& udids) {
        std::vector<krutein::SampleDevice> devices;
        for (const std::string& udid : udids) {
            krutein::SampleDevice device;
            device.udid = udid;
            devices.push_back(device);
        }
        m_hub.Update(devices);
    }

    std::vector<std::string> Serials() const {
        std::vector<std::string> serials;
        for (const Plist& message : m_hub.List())
            serials.push_back(message.Member("Properties")->Text("SerialNumber"));
        return serials;
    }

    std::vector<std::string> m_changes;
    DeviceHub m_hub{[this](const Device& device, const char* what) {
        m_changes.push_back(std::string(what) + " " + device.Udid());
    }};
};

std::string Describe(const std::optional<Plist>& notice) {
    if (!notice) return "nothing";
    return notice->Text("MessageType") + " " + std::to_string(notice->Number("DeviceID").value_or(0));
}

}  // namespace

TEST_F(Hub, ListsWhatIsConnected) {
    EXPECT_THAT(Serials(), IsEmpty());
    Connected({"a", "b"});
    EXPECT_THAT(Serials(), ElementsAre("a", "b"));
    const std::vector<Plist> messages = m_hub.List();
    const std::optional<Plist> properties = messages[0].Member("Properties");
    EXPECT_EQ(messages[0].Text("MessageType"), "Attached");
    EXPECT_EQ(properties->Text("ConnectionType"), "USB");
    EXPECT_EQ(properties->Number("DeviceID"), messages[0].Number("DeviceID"));
}

TEST_F(Hub, TellsNewIdentifiersWithoutTheirDash) {
    Connected({"00008110-001A2C5E3F80401E"});
    EXPECT_THAT(Serials(), ElementsAre("00008110001A2C5E3F80401E"));
    EXPECT_EQ(m_hub.Find(1)->Udid(), "00008110-001A2C5E3F80401E");
}

TEST_F(Hub, ChangesOnlyWhatIsDifferent) {
    Connected({"a", "b"});
    Connected({"b", "c"});
    Connected({"b", "c"});
    EXPECT_THAT(m_changes, ElementsAre("attached a", "attached b", "detached a", "attached c"));
    EXPECT_EQ(m_hub.Find(1), nullptr);
    ASSERT_NE(m_hub.Find(2), nullptr);
    EXPECT_EQ(m_hub.Find(2)->Udid(), "b");
}

TEST_F(Hub, GivesANewNumberEachTime) {
    Connected({"a"});
    Connected({});
    Connected({"a"});
    EXPECT_EQ(m_hub.Find(1), nullptr);
    EXPECT_NE(m_hub.Find(2), nullptr);
}

TEST_F(Hub, TellsListenersOfEveryChange) {
    SocketPair sockets;
    Connected({"a"});
    m_hub.Listen(*sockets.theirs);
    EXPECT_EQ(Describe(ReadNotice(*sockets.ours)), "Attached 1");
    Connected({"a", "b"});
    EXPECT_EQ(Describe(ReadNotice(*sockets.ours)), "Attached 2");
    m_hub.Detach(*m_hub.Find(1));
    EXPECT_EQ(Describe(ReadNotice(*sockets.ours)), "Detached 1");
    m_hub.Forget(*sockets.theirs);
    Connected({});
    sockets.theirs->Shutdown();
    EXPECT_EQ(ReadToEnd(*sockets.ours), "");
}

TEST_F(Hub, CutsOffAListenerThatDoesNotRead) {
    SocketPair sockets;
    m_hub.Listen(*sockets.theirs);
    for (int i = 0; i < 5000; ++i) {
        Connected({"a"});
        Connected({});
    }
    const std::string received = ReadToEnd(*sockets.ours);
    EXPECT_GT(received.size(), 0U);
    EXPECT_LT(received.size(), 5'000'000U);
    m_hub.Forget(*sockets.theirs);
}

TEST_F(Hub, EndsTheConnectionsOfADeviceThatGoes) {
    SocketPair sockets;
    SocketPair later;
    Connected({"a"});
    const std::shared_ptr<Device> device = m_hub.Find(1);
    const Device::Line line(*device, *sockets.theirs);
    m_hub.Detach(*device);
    m_hub.Detach(*device);
    EXPECT_EQ(ReadToEnd(*sockets.ours), "");
    const Device::Line tooLate(*device, *later.theirs);
    EXPECT_EQ(ReadToEnd(*later.ours), "");
}
