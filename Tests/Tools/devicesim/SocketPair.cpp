#include "Tests/Tools/devicesim/SocketPair.h"

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstring>

#include "Tools/devicesim/Frames.h"

using namespace devicesim;

namespace {

/// As in the program: whoever writes to a client that has gone shall see an error.
[[maybe_unused]] const auto g_before = std::signal(SIGPIPE, SIG_IGN);

}  // namespace

SocketPair::SocketPair() {
    std::array<int, 2> ends{-1, -1};
    EXPECT_EQ(socketpair(AF_UNIX, SOCK_STREAM, 0, ends.data()), 0);
    ours = std::make_unique<Connection>(ends[0]);
    theirs = std::make_unique<Connection>(ends[1]);
}

std::unique_ptr<Connection> ConnectTo(const std::string& path) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    EXPECT_LT(path.size(), sizeof address.sun_path);
    std::memcpy(address.sun_path, path.data(), path.size());
    const int descriptor = socket(AF_UNIX, SOCK_STREAM, 0);
    if (connect(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
        close(descriptor);
        return nullptr;
    }
    return std::make_unique<Connection>(descriptor);
}

std::string ReadToEnd(const Connection& connection) {
    std::string all;
    std::string byte;
    while (connection.Read(byte, 1))
        all += byte;
    return all;
}

std::optional<Plist> AskDaemon(const Connection& connection, const Plist& request, std::uint32_t tag) {
    const std::string payload = request.ToXml();
    EXPECT_TRUE(connection.Write(DaemonHeader(static_cast<std::uint32_t>(payload.size()), tag) + payload));
    DaemonFrame frame;
    if (!ReadDaemonFrame(connection, frame)) return std::nullopt;
    EXPECT_EQ(frame.tag, tag);
    return Plist::Parse(frame.payload);
}

std::optional<Plist> ReadNotice(const Connection& connection) {
    DaemonFrame frame;
    if (!ReadDaemonFrame(connection, frame)) return std::nullopt;
    EXPECT_EQ(frame.tag, 0U);
    return Plist::Parse(frame.payload);
}

std::optional<Plist> AskService(const Connection& connection, const Plist& request) {
    std::string payload = request.ToXml();
    EXPECT_TRUE(connection.Write(ServiceHeader(static_cast<std::uint32_t>(payload.size())) + payload));
    if (!ReadServiceFrame(connection, payload)) return std::nullopt;
    return Plist::Parse(payload);
}

Plist Request(const std::string& name, const std::string& value) {
    Plist request;
    request.Set(name, value);
    return request;
}
