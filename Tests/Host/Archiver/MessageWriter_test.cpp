#include "Host/Archiver/MessageWriter.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstring>
#include <string>
#include <thread>

#include "Host/Archiver/StopFlag.h"
#include "Host/ToolCodes.h"

using krutein::MessageWriter;
using krutein::PipeMessageHeader;

namespace {

class Pipe : public testing::Test {
 protected:
    Pipe() {
        if (pipe(m_ends.data()) != 0) ADD_FAILURE() << "no pipe";
    }
    ~Pipe() override {
        CloseReader();
        CloseWriter();
    }

    void CloseReader() { Close(m_ends[0]); }
    void CloseWriter() { Close(m_ends[1]); }
    int WriteEnd() const { return m_ends[1]; }

    /// Everything until the writing end is closed.
    std::string ReadAll() const {
        std::string all;
        char buffer[1000];
        ssize_t count = 0;
        while ((count = read(m_ends[0], buffer, sizeof buffer)) > 0)
            all.append(buffer, static_cast<std::size_t>(count));
        return all;
    }

 private:
    static void Close(int& end) {
        if (end != -1) close(end);
        end = -1;
    }

    std::array<int, 2> m_ends{-1, -1};
};

std::string Bytes(const PipeMessageHeader& header, const std::string& payload) {
    return std::string(reinterpret_cast<const char*>(&header), sizeof header) + payload;
}

}  // namespace

TEST_F(Pipe, GetsHeadersAndPayloads) {
    MessageWriter writer(WriteEnd());
    writer.Progress(3, 70, "ä/b");
    writer.Progress(4, 70, "");
    writer.Exit(15);
    CloseWriter();
    EXPECT_EQ(ReadAll(), Bytes({1, 3, 70, 5}, std::string("ä/b") + '\0') + Bytes({1, 4, 70, 0}, "") +
                             Bytes({2, 0, 15, 0}, ""));
}

TEST_F(Pipe, GetsMessagesThatAreLargerThanItself) {
    const std::string text(1'000'000, 'x');
    std::string all;
    std::thread reader([&] { all = ReadAll(); });
    MessageWriter(WriteEnd()).Progress(1, 1, text);
    CloseWriter();
    reader.join();
    EXPECT_TRUE(all == Bytes({1, 1, 1, 1'000'001}, text + '\0'));
}

TEST_F(Pipe, MayBeSetNotToBlock) {
    fcntl(WriteEnd(), F_SETFL, O_NONBLOCK);
    const std::string text(300'000, 'x');
    std::string all;
    std::thread reader([&] {
        usleep(50'000);
        all = ReadAll();
    });
    MessageWriter(WriteEnd()).Progress(1, 1, text);
    CloseWriter();
    reader.join();
    EXPECT_TRUE(all == Bytes({1, 1, 1, 300'001}, text + '\0'));
}

TEST_F(Pipe, WithoutAReaderStopsTheRun) {
    std::signal(SIGPIPE, SIG_IGN);
    CloseReader();
    try {
        MessageWriter(WriteEnd()).Exit(0);
        FAIL() << "was written";
    } catch (const krutein::Stopped& stop) {
        EXPECT_EQ(stop.status, kToolFailed);
    }
}

TEST_F(Pipe, IsRecognisedByWhetherItCanBeWrittenTo) {
    EXPECT_TRUE(MessageWriter::CanWriteTo(WriteEnd()));
    const int readOnly = open("/dev/null", O_RDONLY);
    EXPECT_FALSE(MessageWriter::CanWriteTo(readOnly));
    close(readOnly);
    EXPECT_FALSE(MessageWriter::CanWriteTo(readOnly));
    EXPECT_FALSE(MessageWriter::CanWriteTo(-1));
}
