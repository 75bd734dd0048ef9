// The backup tool of the benchmarks: it moves a prepared backup into place, if there is one, sends progress
// messages, if they are wanted, and says that it is done.

#include "Benchmarks/compare.d/BenchTool.h"

#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <string>

#include "Module/BackupLib/PipeMessage.h"

namespace {

constexpr std::size_t kWriteBytes = std::size_t{64} * 1024;

/// The value behind an option of the command line.
std::string After(const std::string& argument, const std::string& option) {
    const std::size_t at = argument.find(option + "|");
    if (at == std::string::npos) return {};
    const std::size_t begin = at + option.size() + 1;
    return argument.substr(begin, argument.find('|', begin) - begin);
}

std::string Message(krutein::PipeMessageType type, int length) {
    const krutein::PipeMessageHeader header{type, 0, 0, length};
    std::string message(reinterpret_cast<const char*>(&header), sizeof header);
    return message.append(static_cast<std::size_t>(length), 'p');
}

bool Write(int pipe, const std::string& bytes) {
    for (std::size_t written = 0; written < bytes.size();) {
        const ssize_t count = write(pipe, bytes.data() + written, bytes.size() - written);
        if (count <= 0) return false;
        written += static_cast<std::size_t>(count);
    }
    return true;
}

/// In large pieces, so that the reader is what is measured.
bool WriteProgress(int pipe, int messages) {
    const std::string message = Message(krutein::kPipeProgress, kBenchMessageBytes);
    std::string piece;
    for (int n = 0; n < messages; ++n) {
        piece += message;
        if (piece.size() < kWriteBytes) continue;
        if (!Write(pipe, piece)) return false;
        piece.clear();
    }
    return Write(pipe, piece);
}

void NoteEnd(const char* path) {
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    std::ofstream out(path);
    out.precision(17);
    out << std::chrono::duration<double>(now).count();
}

}  // namespace

int main(int count, char** words) {
    if (count != 2) return 2;
    const std::string argument = words[1];
    const char* const prepared = std::getenv(kBenchBackup);
    const std::string target = After(argument, "-backuppath") + "/" + After(argument, "-target");
    if (prepared != nullptr && std::rename(prepared, target.c_str()) != 0) return 3;
    const int pipe = std::atoi(After(argument, "-pipe").c_str());
    const char* const messages = std::getenv(kBenchMessages);
    if (messages != nullptr && !WriteProgress(pipe, std::atoi(messages))) return 4;
    const char* const end = std::getenv(kBenchEnd);
    if (end != nullptr) NoteEnd(end);
    return Write(pipe, Message(krutein::kPipeExit, 0)) ? 0 : 4;
}
