#include "Tests/support/ResourceCount.h"

#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <ostream>
#include <sstream>
#include <string>
#include <thread>

namespace {

namespace fs = std::filesystem;

int CountEntries(const char* folder) {
    std::error_code ignored;
    return static_cast<int>(std::distance(fs::directory_iterator(folder, ignored), fs::directory_iterator()));
}

/// Children of all threads of this process.
int CountChildren() {
    int count = 0;
    std::error_code ignored;
    for (const fs::directory_entry& thread : fs::directory_iterator("/proc/self/task", ignored)) {
        std::ifstream file(thread.path() / "children");
        count += static_cast<int>(
            std::distance(std::istream_iterator<std::string>(file), std::istream_iterator<std::string>()));
    }
    return count;
}

}  // namespace

ResourceCount ResourceCount::Now() {
    // A sanitizer adds a thread of its own to the first that is made.
    [[maybe_unused]] static const bool warm = [] {
        std::thread([] {}).join();
        return true;
    }();
    return {CountEntries("/dev/fd"), CountEntries("/proc/self/task"), CountChildren()};
}

bool operator==(const ResourceCount& a, const ResourceCount& b) {
    return a.descriptors == b.descriptors && a.threads == b.threads && a.children == b.children;
}

std::ostream& operator<<(std::ostream& out, const ResourceCount& count) {
    return out << count.descriptors << " descriptors, " << count.threads << " threads, " << count.children
               << " children";
}

ResourceCount AwaitResources(const ResourceCount& wanted) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    ResourceCount now = ResourceCount::Now();
    while (!(now == wanted) && std::chrono::steady_clock::now() < deadline) {
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        now = ResourceCount::Now();
    }
    return now;
}
