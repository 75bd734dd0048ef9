// The pipe of the backup tool: bytes that go through a real pipe in pieces come out as the messages that a
// plain decoding of the whole gives, whenever the reader begins and however it is ended.

#include <pthread.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include "Module/BackupLib/MessagePipe.h"
#include "Tests/fuzz/Fuzz.h"

namespace {

using krutein::MessagePipe;
using krutein::PipeMessageHeader;

struct Event {
    PipeMessageHeader header{};
    std::string payload;

    bool operator==(const Event& other) const {
        return std::memcmp(&header, &other.header, sizeof header) == 0 && payload == other.payload;
    }
};

/// The messages of the bytes, of which the last may be cut.
std::vector<Event> Decode(const std::string& bytes) {
    std::vector<Event> events;
    std::size_t at = 0;
    while (bytes.size() - at >= sizeof(PipeMessageHeader)) {
        Event event;
        std::memcpy(&event.header, bytes.data() + at, sizeof event.header);
        at += sizeof event.header;
        const auto length = static_cast<std::size_t>(std::max(event.header.length, 0));
        if (length > bytes.size() - at) break;
        event.payload = bytes.substr(at, length);
        at += length;
        events.push_back(event);
    }
    return events;
}

/// The reader as the runner has it: cancellable where the pipe waits only, with nothing on its own stack.
struct Reader {
    MessagePipe pipe;
    std::vector<Event> events;
    MessagePipe::Message message;
    std::size_t stopAfter = 0;  ///< messages; the rest is discarded

    static void* Run(void* self) {
        int before = 0;
        pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &before);
        static_cast<Reader*>(self)->ReadAll();
        pthread_setcancelstate(before, nullptr);
        return nullptr;
    }

    void ReadAll() {
        while (events.size() < stopAfter && pipe.Next(message)) {
            events.emplace_back();
            events.back().header = message.header;
            if (message.header.length <= 0) {
                Require(message.payload == nullptr, "a message without bytes has no payload");
                continue;
            }
            const auto length = static_cast<std::size_t>(message.header.length);
            const auto* const payload = static_cast<const char*>(message.payload);
            Require(payload[length] == '\0', "a payload is followed by a zero byte");
            events.back().payload.assign(payload, length);
        }
        pipe.Discard();
        pipe.Leave();
    }
};

void WriteAll(int descriptor, const std::string& bytes, std::size_t piece) {
    for (std::size_t at = 0; at < bytes.size();) {
        const ssize_t count = write(descriptor, bytes.data() + at, std::min(piece, bytes.size() - at));
        Require(count > 0, "the pipe takes the bytes");
        at += static_cast<std::size_t>(count);
    }
}

/// How a run goes, from the input's first bytes.
struct Plan {
    std::size_t piece;      ///< bytes in one write
    std::size_t stopAfter;  ///< messages after which the reader forwards nothing more
    bool late;              ///< the reader begins when the tool has ended
};

Plan Take(FuzzInput& input) {
    Plan plan{};
    plan.piece = input.Byte() + std::size_t{1};
    const std::uint8_t how = input.Byte();
    plan.late = (how & 1) != 0;
    plan.stopAfter = (how & 2) != 0 ? how >> 2U : SIZE_MAX;
    return plan;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzInput input(data, size);
    const Plan plan = Take(input);
    const std::string bytes = input.Rest();
    if (bytes.size() > 32768) return 0;  // all of it must fit into the pipe for a late reader

    Reader reader;
    reader.stopAfter = plan.stopAfter;
    Require(reader.pipe.Open(), "a pipe can be made");
    pthread_t thread{};
    const auto start = [&] {
        Require(pthread_create(&thread, nullptr, &Reader::Run, &reader) == 0, "a thread can be made");
    };
    if (!plan.late) start();
    WriteAll(reader.pipe.WriteEnd(), bytes, plan.piece);
    reader.pipe.End();
    if (plan.late) start();
    reader.pipe.AwaitReader();
    pthread_cancel(thread);
    pthread_join(thread, nullptr);

    std::vector<Event> expected = Decode(bytes);
    expected.resize(std::min(expected.size(), plan.stopAfter));
    Require(reader.events == expected, "the messages are those of the bytes");
    return 0;
}
