// The backup tool of the benchmarks: it moves a prepared backup into place, if there is one, and says that it
// is done.

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "Module/BackupLib/PipeMessage.h"

namespace {

/// The value behind an option of the command line.
std::string After(const std::string& argument, const std::string& option) {
    const std::size_t at = argument.find(option + "|");
    if (at == std::string::npos) return {};
    const std::size_t begin = at + option.size() + 1;
    return argument.substr(begin, argument.find('|', begin) - begin);
}

}  // namespace

int main(int count, char** words) {
    if (count != 2) return 2;
    const std::string argument = words[1];
    const char* const prepared = std::getenv("KRUTEIN_BENCH_BACKUP");
    const std::string target = After(argument, "-backuppath") + "/" + After(argument, "-target");
    if (prepared != nullptr && std::rename(prepared, target.c_str()) != 0) return 3;
    const int pipe = std::atoi(After(argument, "-pipe").c_str());
    const krutein::PipeMessageHeader done{krutein::kPipeExit, 0, 0, 0};
    return write(pipe, &done, sizeof done) == static_cast<ssize_t>(sizeof done) ? 0 : 4;
}
