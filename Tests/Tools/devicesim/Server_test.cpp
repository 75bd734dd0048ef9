#include "Tools/devicesim/Server.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <memory>
#include <vector>

#include "Tests/Tools/devicesim/SocketPair.h"
#include "Tests/support/ResourceCount.h"
#include "Tests/support/TemporaryFolder.h"

using namespace devicesim;
using testing::HasSubstr;

namespace {

/// Sends every byte back.
void Echo(const Connection& connection) {
    std::string byte;
    while (connection.Read(byte, 1))
        connection.Write(byte);
}

class ServerTest : public testing::Test {
 protected:
    std::string Path() const { return m_folder.Path("s"); }

    std::string ErrorAt(const std::string& path) const {
        try {
            const Server server(path, &Echo);
        } catch (const ServerError& error) {
            return error.what();
        }
        return "no error";
    }

    TemporaryFolder m_folder;
};

bool Answers(const Connection& client) {
    std::string answer;
    return client.Write("x") && client.Read(answer, 1) && answer == "x";
}

}  // namespace

TEST_F(ServerTest, ServesManyClientsAtOnce) {
    const Server server(Path(), &Echo);
    std::vector<std::unique_ptr<Connection>> clients;
    clients.reserve(50);
    for (int i = 0; i < 50; ++i)
        clients.push_back(ConnectTo(Path()));
    for (auto client = clients.rbegin(); client != clients.rend(); ++client)
        EXPECT_TRUE(Answers(**client));
}

TEST_F(ServerTest, IsForItsOwnerOnly) {
    const Server server(Path(), &Echo);
    struct stat info {};
    ASSERT_EQ(stat(Path().c_str(), &info), 0);
    EXPECT_EQ(info.st_mode & 0777, 0700U);
}

TEST_F(ServerTest, EndsItsConnectionsAndRemovesItsSocket) {
    const ResourceCount before = ResourceCount::Now();
    std::unique_ptr<Connection> client;
    {
        const Server server(Path(), &Echo);
        client = ConnectTo(Path());
        EXPECT_TRUE(Answers(*client));
    }
    EXPECT_EQ(ReadToEnd(*client), "");
    client.reset();
    EXPECT_FALSE(std::filesystem::exists(Path()));
    EXPECT_EQ(AwaitResources(before), before);
}

TEST_F(ServerTest, KeepsNothingOfClientsThatHaveGone) {
    const Server server(Path(), &Echo);
    EXPECT_TRUE(Answers(*ConnectTo(Path())));
    const ResourceCount before = ResourceCount::Now();
    for (int i = 0; i < 200; ++i)
        EXPECT_TRUE(Answers(*ConnectTo(Path())));
    const ResourceCount after = ResourceCount::Now();
    // The last ones are forgotten when the next one comes.
    EXPECT_LE(after.descriptors, before.descriptors + 5);
    EXPECT_LE(after.threads, before.threads + 5);
}

TEST_F(ServerTest, ReplacesTheSocketOfADeadServer) {
    {
        const Server first(Path(), &Echo);
        std::filesystem::rename(Path(), m_folder.Path("kept"));
    }
    std::filesystem::rename(m_folder.Path("kept"), Path());
    EXPECT_EQ(ConnectTo(Path()), nullptr);
    const Server second(Path(), &Echo);
    EXPECT_TRUE(Answers(*ConnectTo(Path())));
}

TEST_F(ServerTest, LeavesALivingServerAlone) {
    const Server first(Path(), &Echo);
    EXPECT_THAT(ErrorAt(Path()), HasSubstr("another server listens there"));
    EXPECT_TRUE(Answers(*ConnectTo(Path())));
}

TEST_F(ServerTest, LeavesWhatIsNoSocketAlone) {
    EXPECT_THAT(ErrorAt(m_folder.Write("file", "content")), HasSubstr("is no socket"));
    EXPECT_EQ(m_folder.Read("file"), "content");
}

TEST_F(ServerTest, RefusesPathsThatCannotBe) {
    EXPECT_THAT(ErrorAt(std::string(108, 'x')), HasSubstr("too long"));
    EXPECT_THAT(ErrorAt(""), HasSubstr("no path"));
    EXPECT_THAT(ErrorAt(m_folder.Path("missing/s")), HasSubstr("No such file"));
}
