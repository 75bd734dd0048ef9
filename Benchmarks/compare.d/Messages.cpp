// The tool's progress messages, from its pipe to the host's callback.

#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <string>

#include "Benchmarks/compare.d/BenchTool.h"
#include "Benchmarks/compare.d/Comparisons.h"
#include "Benchmarks/compare.d/Job.h"
#include "Module/BackupLib/MobileBackupTask.h"
#include "Module/BackupLib/PipeMessage.h"

namespace {

class Counter : public CCallBack {
 public:
    int OnStateChange(CallBackType /*type*/, unsigned long long /*arg1*/, unsigned long long /*arg2*/,
                      void* payload) override {
        if (payload != nullptr) ++count;
        return 0;
    }

    int count = 0;
};

double ThroughTheRunner(int messages) {
    setenv(kBenchMessages, std::to_string(messages).c_str(), 1);
    const Quiet quiet;
    Counter counter;
    CMobileBackupTask task;
    const double seconds = Timed([&] {
        if (task.StartFullBackup(".", "messages", &counter, nullptr) != 0) std::exit(1);
    });
    if (counter.count != messages) std::exit(1);
    return seconds - kFixedPauseSeconds;
}

bool ReadAll(int pipe, void* to, std::size_t bytes) {
    auto* next = static_cast<char*>(to);
    while (bytes > 0) {
        const ssize_t count = read(pipe, next, bytes);
        if (count <= 0) return false;
        next += count;
        bytes -= static_cast<std::size_t>(count);
    }
    return true;
}

/// Two reads for each message, and nothing else.
double BareLoop(int messages) {
    setenv(kBenchMessages, std::to_string(messages).c_str(), 1);
    int ends[2];
    if (pipe(ends) != 0) std::exit(1);
    int count = 0;
    const double seconds = Timed([&] {
        const pid_t tool = fork();
        if (tool == 0) {
            const std::string argument = "-pipe|" + std::to_string(ends[1]);
            execl(BenchToolPath().c_str(), "HandsetArchiver", argument.c_str(), nullptr);
            _exit(127);
        }
        close(ends[1]);
        krutein::PipeMessageHeader header{};
        char payload[kBenchMessageBytes];
        while (ReadAll(ends[0], &header, sizeof header) && header.type == krutein::kPipeProgress) {
            if (!ReadAll(ends[0], payload, static_cast<std::size_t>(header.length))) break;
            ++count;
        }
        int status = 0;
        if (waitpid(tool, &status, 0) != tool || status != 0) std::exit(1);
    });
    if (count != messages) std::exit(1);
    return seconds;
}

}  // namespace

std::vector<Comparison> MessageComparisons(const Scale& scale) {
    Comparison comparison;
    comparison.name = std::to_string(scale.messages) + " progress messages";
    comparison.against = "two reads a message";
    comparison.goal = 1.2;
    comparison.items = scale.messages;
    comparison.ours = [count = scale.messages] { return ThroughTheRunner(count); };
    comparison.theirs = [count = scale.messages] { return BareLoop(count); };
    return {comparison};
}
