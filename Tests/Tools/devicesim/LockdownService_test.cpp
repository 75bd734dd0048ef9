#include "Tools/devicesim/LockdownService.h"

#include <gtest/gtest.h>

#include <thread>

#include "Tests/Tools/devicesim/SocketPair.h"
#include "Tools/devicesim/Frames.h"

using namespace devicesim;

namespace {

class Lockdown : public testing::Test {
 protected:
    Lockdown() { m_pairings.PairAsBefore("abc-1"); }

    static krutein::SampleDevice Facts() {
        krutein::SampleDevice facts;
        facts.udid = "abc-1";
        facts.name = "Ann's phone";
        facts.disk.totalBytes = 100;
        return facts;
    }

    Plist Answer(const Plist& request) { return m_service.Answer(request, m_device); }

    Plist Value(const char* key, const char* domain = nullptr) {
        Plist request = Request("Request", "GetValue");
        if (key != nullptr) request.Set("Key", key);
        if (domain != nullptr) request.Set("Domain", domain);
        return Answer(request);
    }

    Plist StartSession() {
        Plist request = Request("Request", "StartSession");
        request.Set("HostID", Plist::Parse(m_pairings.Record("abc-1"))->Text("HostID"));
        return Answer(request);
    }

    Plist Pair(const char* name, const char* hostId) {
        Plist request = Request("Request", name);
        request.Set("PairRecord", Request("HostID", hostId));
        return Answer(request);
    }

    std::string Error(const Plist& answer) { return answer.Text("Error"); }

    DeviceHub m_hub;
    Pairings m_pairings;
    Faults m_faults;
    LockdownService m_service{m_hub, m_pairings, m_faults};
    Device m_device{Facts(), 1};
};

}  // namespace

TEST_F(Lockdown, RepeatsTheRequestInItsAnswer) {
    for (const char* name :
         {"QueryType", "StopSession", "Goodbye", "GetValue", "StartSession", "Pair", "Other"})
        EXPECT_EQ(Answer(Request("Request", name)).Text("Request"), name);
}

TEST_F(Lockdown, TellsItsType) {
    EXPECT_EQ(Answer(Request("Request", "QueryType")).Text("Type"), "com.apple.mobile.lockdown");
}

TEST_F(Lockdown, TellsValues) {
    const Plist name = Value("DeviceName");
    EXPECT_EQ(name.Text("Value"), "Ann's phone");
    EXPECT_EQ(name.Text("Key"), "DeviceName");
    EXPECT_FALSE(name.Has("Domain"));
    const Plist total = Value("TotalDiskCapacity", "com.apple.disk_usage");
    EXPECT_EQ(total.Number("Value"), 100U);
    EXPECT_EQ(total.Text("Domain"), "com.apple.disk_usage");
}

TEST_F(Lockdown, TellsAWholeDomainWithoutAKey) {
    EXPECT_EQ(Value(nullptr).Member("Value")->Text("DeviceName"), "Ann's phone");
    EXPECT_EQ(Value(nullptr, "com.apple.disk_usage").Member("Value")->Number("TotalDiskCapacity"), 100U);
}

TEST_F(Lockdown, LacksUnknownKeysAndDomains) {
    EXPECT_EQ(Error(Value("NoSuchKey")), "MissingValue");
    EXPECT_EQ(Error(Value("DeviceName", "com.apple.unknown")), "MissingValue");
    EXPECT_EQ(Error(Value(nullptr, "com.apple.unknown")), "MissingValue");
}

TEST_F(Lockdown, CanRefuseLackOrSpoilAKey) {
    m_faults.Add("refuse=DeviceName");
    m_faults.Add("missing=ProductType");
    m_faults.Add("wrong-type=UniqueDeviceID");
    m_faults.Add("wrong-type=TotalDiskCapacity");
    EXPECT_EQ(Error(Value("DeviceName")), "GetProhibited");
    EXPECT_FALSE(Value("DeviceName").Has("Value"));
    EXPECT_EQ(Error(Value("ProductType")), "MissingValue");
    EXPECT_TRUE(Value("UniqueDeviceID").Number("Value"));
    EXPECT_NE(Value("TotalDiskCapacity", "com.apple.disk_usage").Text("Value"), "");
}

TEST_F(Lockdown, OpensSessionsForComputersThatItTrusts) {
    const Plist session = StartSession();
    EXPECT_EQ(Error(session), "");
    EXPECT_NE(session.Text("SessionID"), "");
    EXPECT_TRUE(session.Has("EnableSessionSSL"));
    Plist stranger = Request("Request", "StartSession");
    EXPECT_EQ(Error(Answer(stranger)), "InvalidHostID");
    stranger.Set("HostID", "stranger");
    EXPECT_EQ(Error(Answer(stranger)), "InvalidHostID");
}

TEST_F(Lockdown, CanBeLocked) {
    m_faults.Add("locked");
    EXPECT_EQ(Error(StartSession()), "PasswordProtected");
    EXPECT_EQ(Error(Pair("Pair", "host")), "PasswordProtected");
}

TEST_F(Lockdown, CanForgetThisComputer) {
    m_faults.Add("forgotten");
    EXPECT_EQ(Error(StartSession()), "InvalidHostID");
}

TEST_F(Lockdown, PairsAndUnpairs) {
    EXPECT_EQ(Error(Pair("ValidatePair", "host")), "InvalidHostID");
    EXPECT_EQ(Error(Pair("Pair", "host")), "");
    EXPECT_EQ(Error(Pair("ValidatePair", "host")), "");
    EXPECT_TRUE(m_pairings.Trusts("abc-1", "host"));
    EXPECT_EQ(Error(Pair("Unpair", "host")), "");
    EXPECT_FALSE(m_pairings.Trusts("abc-1", "host"));
    EXPECT_EQ(Error(Answer(Request("Request", "Pair"))), "InvalidPairRecord");
}

TEST_F(Lockdown, CanRefuseToPairOrWaitForItsOwner) {
    m_faults.Add("trust-dialog");
    EXPECT_EQ(Error(Pair("Pair", "host")), "PairingDialogResponsePending");
    m_faults = Faults();
    m_faults.Add("no-trust");
    EXPECT_EQ(Error(Pair("Pair", "host")), "UserDeniedPairing");
    EXPECT_FALSE(m_pairings.Trusts("abc-1", "host"));
}

TEST_F(Lockdown, DoesNotKnowOtherRequests) {
    EXPECT_EQ(Error(Answer(Request("Request", "EnterRecovery"))), "InvalidRequest");
    EXPECT_EQ(Error(Answer(Plist())), "InvalidRequest");
}

namespace {

/// The service on a connection.
class LockdownConnection : public Lockdown {
 protected:
    void Begin() {
        m_thread = std::thread([this] {
            m_service.Serve(*m_sockets.theirs, m_device);
            m_sockets.theirs->Shutdown();
        });
    }
    ~LockdownConnection() override {
        m_sockets.ours->Shutdown();
        if (m_thread.joinable()) m_thread.join();
    }

    bool Answers(const char* name) {
        return AskService(*m_sockets.ours, Request("Request", name)).has_value();
    }

    SocketPair m_sockets;
    std::thread m_thread;
};

}  // namespace

TEST_F(LockdownConnection, AnswersUntilTheGoodbye) {
    Begin();
    EXPECT_TRUE(Answers("QueryType"));
    EXPECT_TRUE(Answers("StopSession"));
    EXPECT_TRUE(Answers("Goodbye"));
    EXPECT_EQ(ReadToEnd(*m_sockets.ours), "");
}

TEST_F(LockdownConnection, EndsAfterSomeAnswers) {
    m_faults.Add("drop-after=2");
    Begin();
    EXPECT_TRUE(Answers("QueryType"));
    EXPECT_TRUE(Answers("QueryType"));
    EXPECT_EQ(ReadToEnd(*m_sockets.ours), "");
}

TEST_F(LockdownConnection, EndsAtWhatIsNoRequest) {
    Begin();
    m_sockets.ours->Write(ServiceHeader(4) + "what");
    EXPECT_EQ(ReadToEnd(*m_sockets.ours), "");
}

TEST_F(LockdownConnection, PullsTheDeviceOut) {
    m_faults.Add("detach=QueryType");
    m_hub.Update({Facts()});
    const std::shared_ptr<Device> device = m_hub.Find(1);
    Begin();
    EXPECT_FALSE(Answers("QueryType"));
    EXPECT_EQ(m_hub.Find(1), nullptr);
}

TEST_F(LockdownConnection, GoesSilentWhenItShouldEncrypt) {
    m_faults.Add("tls-silence");
    Begin();
    Plist request = Request("Request", "StartSession");
    request.Set("HostID", Plist::Parse(m_pairings.Record("abc-1"))->Text("HostID"));
    ASSERT_TRUE(AskService(*m_sockets.ours, request));
    m_sockets.ours->Write("hello, encryption");
    EXPECT_TRUE(m_sockets.ours->Pause(std::chrono::milliseconds(50)));
}
