#include "Tools/devicesim/Frames.h"

#include <gtest/gtest.h>

#include "Tests/Tools/devicesim/SocketPair.h"

using namespace devicesim;

namespace {

/// Reads one frame of what was sent before the connection ended.
template <typename Read>
bool ReadsFrom(const std::string& bytes, Read read) {
    SocketPair sockets;
    EXPECT_TRUE(sockets.ours->Write(bytes));
    sockets.ours.reset();
    return read(*sockets.theirs);
}

std::string Bytes(const char* text, std::size_t count) {
    return {text, count};
}

}  // namespace

TEST(DaemonFrame, HasALittleEndianHeader) {
    EXPECT_EQ(DaemonHeader(0x01020300, 0xF0E1D2C3),
              Bytes("\x10\x03\x02\x01\x01\0\0\0\x08\0\0\0\xC3\xD2\xE1\xF0", 16));
}

TEST(DaemonFrame, IsReadAsItWasWritten) {
    DaemonFrame frame;
    EXPECT_TRUE(ReadsFrom(DaemonHeader(5, 0x81828384) + "hello",
                          [&](const Connection& c) { return ReadDaemonFrame(c, frame); }));
    EXPECT_EQ(frame.version, kDaemonVersion);
    EXPECT_EQ(frame.message, kDaemonPlistMessage);
    EXPECT_EQ(frame.tag, 0x81828384U);
    EXPECT_EQ(frame.payload, "hello");
}

TEST(DaemonFrame, IsNotReadFromAnyPrefix) {
    const std::string whole = DaemonHeader(5, 1) + "hello";
    for (std::size_t count = 0; count < whole.size(); ++count) {
        DaemonFrame frame;
        EXPECT_FALSE(ReadsFrom(whole.substr(0, count), [&](const Connection& c) {
            return ReadDaemonFrame(c, frame);
        })) << count;
    }
}

TEST(DaemonFrame, IsNotReadWithALengthThatCannotBe) {
    for (const std::uint32_t bytes : {kMaxPayloadBytes + 1, 0x7FFFFFFFU, 0xFFFFFFEFU,
                                      0xFFFFFFF0U /* length 0 */, 0xFFFFFFFFU /* length 15 */}) {
        DaemonFrame frame;
        EXPECT_FALSE(ReadsFrom(DaemonHeader(bytes, 1), [&](const Connection& c) {
            return ReadDaemonFrame(c, frame);
        })) << bytes;
    }
}

TEST(ServiceFrame, HasABigEndianHeader) {
    EXPECT_EQ(ServiceHeader(0xF1E2D3C4), Bytes("\xF1\xE2\xD3\xC4", 4));
}

TEST(ServiceFrame, IsReadAsItWasWritten) {
    std::string payload;
    const auto read = [&](const Connection& c) { return ReadServiceFrame(c, payload); };
    const std::string text(300, 'x');
    EXPECT_TRUE(ReadsFrom(ServiceHeader(300) + text, read));
    EXPECT_EQ(payload, text);
    EXPECT_TRUE(ReadsFrom(ServiceHeader(0), read));
    EXPECT_EQ(payload, "");
}

TEST(ServiceFrame, IsNotReadFromAnyPrefixOrWithALengthThatCannotBe) {
    std::string payload;
    const auto read = [&](const Connection& c) { return ReadServiceFrame(c, payload); };
    const std::string whole = ServiceHeader(5) + "hello";
    for (std::size_t count = 0; count < whole.size(); ++count)
        EXPECT_FALSE(ReadsFrom(whole.substr(0, count), read)) << count;
    EXPECT_FALSE(ReadsFrom(ServiceHeader(kMaxPayloadBytes + 1), read));
    EXPECT_FALSE(ReadsFrom(ServiceHeader(0xFFFFFFFF), read));
}
