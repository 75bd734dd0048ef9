#include "Tools/devicesim/Delivery.h"

#include <gtest/gtest.h>

#include <future>

#include "Tests/Tools/devicesim/SocketPair.h"
#include "Tools/devicesim/Frames.h"

using namespace devicesim;

namespace {

/// An answer "hello" on its way, with a fault.
class Delivery : public testing::Test {
 protected:
    bool Send(const char* faultText) {
        Faults faults;
        if (faultText != nullptr) faults.Add(faultText);
        return Deliver(*m_sockets.theirs, &ServiceHeader, "hello", faults.OnAnswer("", {"R", ""}),
                       [this] { m_detached = true; });
    }

    std::string Arrived() {
        m_sockets.theirs.reset();
        return ReadToEnd(*m_sockets.ours);
    }

    SocketPair m_sockets;
    bool m_detached = false;
};

const std::string kWhole = ServiceHeader(5) + "hello";

}  // namespace

TEST_F(Delivery, IsWholeWithoutAFault) {
    EXPECT_TRUE(Send(nullptr));
    EXPECT_EQ(Arrived(), kWhole);
}

TEST_F(Delivery, IsLate) {
    const auto start = std::chrono::steady_clock::now();
    EXPECT_TRUE(Send("late=R:60"));
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(60));
    EXPECT_EQ(Arrived(), kWhole);
}

TEST_F(Delivery, EndsEarlyWhenNobodyWaitsForALateAnswer) {
    m_sockets.ours.reset();
    EXPECT_FALSE(Send("late=R:600000"));
}

TEST_F(Delivery, IsHalf) {
    EXPECT_FALSE(Send("half=R"));
    EXPECT_EQ(Arrived(), kWhole.substr(0, 4));
}

TEST_F(Delivery, IsGarbage) {
    EXPECT_TRUE(Send("garbage=R"));
    const std::string arrived = Arrived();
    EXPECT_EQ(arrived, ServiceHeader(static_cast<std::uint32_t>(arrived.size() - 4)) + arrived.substr(4));
    EXPECT_FALSE(Plist::Parse(arrived.substr(4)));
}

TEST_F(Delivery, IsAnnouncedHuge) {
    EXPECT_FALSE(Send("huge=R"));
    EXPECT_EQ(Arrived(), ServiceHeader(0xFFFFFF00));
}

TEST_F(Delivery, DetachesInstead) {
    EXPECT_FALSE(Send("detach=R"));
    EXPECT_TRUE(m_detached);
    EXPECT_EQ(Arrived(), "");
}

TEST_F(Delivery, IsSilentUntilTheClientGoes) {
    std::future<bool> sent = std::async(std::launch::async, [this] { return Send("silent=R"); });
    EXPECT_EQ(sent.wait_for(std::chrono::milliseconds(50)), std::future_status::timeout);
    m_sockets.ours.reset();
    EXPECT_FALSE(sent.get());
}
