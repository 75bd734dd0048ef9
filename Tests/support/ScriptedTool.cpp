// A backup tool that does what a script tells it, one step a line. The script's path is in the environment
// variable KRUTEIN_TOOL_SCRIPT; Tests/support/ToolScript.h writes it and names the steps. One whose name ends
// with a dot and the device's identifier comes first.

#include <fcntl.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "Module/BackupLib/PipeMessage.h"

namespace fs = std::filesystem;

namespace {

int g_pipe = -1;
bool g_singleBytes = false;

void Sleep(int milliseconds) {
    std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
}

void WriteAll(const std::string& bytes) {
    std::size_t written = 0;
    while (written < bytes.size()) {
        const std::size_t count = g_singleBytes ? 1 : bytes.size() - written;
        const ssize_t done = write(g_pipe, bytes.data() + written, count);
        if (done <= 0) std::exit(99);
        written += static_cast<std::size_t>(done);
        if (g_singleBytes) Sleep(1);
    }
}

std::string Header(unsigned type, int arg1, int arg2, int length) {
    const krutein::PipeMessageHeader header{type, arg1, arg2, length};
    std::string bytes(sizeof header, '\0');
    std::memcpy(bytes.data(), &header, sizeof header);
    return bytes;
}

std::string FromHex(const std::string& hex) {
    std::string bytes;
    for (std::size_t i = 0; i + 1 < hex.size(); i += 2) {
        bytes.push_back(static_cast<char>(std::stoi(hex.substr(i, 2), nullptr, 16)));
    }
    return bytes;
}

/// Leaves a child behind that holds the pipe, and that floods it if it is told to.
void Linger(int milliseconds, bool flood) {
    if (fork() != 0) return;
    const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(milliseconds);
    while (std::chrono::steady_clock::now() < end) {
        if (flood) {
            WriteAll(Header(krutein::kPipeProgress, 9, 9, 0));
        } else {
            Sleep(5);
        }
    }
    _exit(0);
}

using Options = std::map<std::string, std::string>;

/// "-backup|-backuppath|/x|-target|y" as pairs; options without a value have an empty one.
Options Parse(const std::string& argument) {
    Options options;
    std::istringstream words(argument);
    std::string word;
    std::string name;
    while (std::getline(words, word, '|')) {
        if (!word.empty() && word.front() == '-' &&
            (name.empty() || name == "-backup" || name == "-restore" || name == "-info" ||
             !options[name].empty())) {
            name = word;
            options[name];
        } else {
            options[name] = word;
        }
    }
    return options;
}

void MakeBackup(const Options& options) {
    const std::string parent = options.at("-backuppath");
    const std::string folder = parent + "/" + options.at("-target");
    fs::create_directories(folder);
    std::ofstream(folder + "/Manifest.db") << "made by a script";
    std::ofstream(parent + "/left-over") << "x";
}

/// Runs a command with the folders of the job in its environment.
void RunShell(const Options& options, const std::string& command) {
    setenv("JOB", options.at("-backuppath").c_str(), 1);
    setenv("BACKUP", (options.at("-backuppath") + "/" + options.at("-target")).c_str(), 1);
    if (std::system(command.c_str()) != 0) std::_Exit(96);
}

std::string RestOf(std::istringstream& step) {
    std::string rest;
    std::getline(step >> std::ws, rest);
    return rest;
}

void Do(const std::string& line, const std::string& argument) {
    const Options options = Parse(argument);
    std::istringstream step(line);
    std::string verb;
    int a = 0;
    int b = 0;
    step >> verb;
    if (verb == "progress") {
        step >> a >> b;
        const std::string text = RestOf(step);
        const int length = text.empty() ? 0 : static_cast<int>(text.size()) + 1;
        WriteAll(Header(krutein::kPipeProgress, a, b, length) + (text.empty() ? "" : text + '\0'));
    } else if (verb == "header") {
        unsigned type = 0;
        int length = 0;
        step >> type >> a >> b >> length;
        WriteAll(Header(type, a, b, length));
    } else if (verb == "fill") {
        step >> a;
        WriteAll(std::string(static_cast<std::size_t>(a), 'x'));
    } else if (verb == "bytes") {
        WriteAll(FromHex(RestOf(step)));
    } else if (verb == "single-bytes") {
        g_singleBytes = true;
    } else if (verb == "many") {
        step >> a;
        for (int i = 1; i <= a; ++i)
            WriteAll(Header(krutein::kPipeProgress, i, a, 0));
    } else if (verb == "exit-message") {
        step >> a;
        WriteAll(Header(krutein::kPipeExit, 0, a, 0));
    } else if (verb == "sleep") {
        step >> a;
        Sleep(a);
    } else if (verb == "linger" || verb == "linger-flood") {
        step >> a;
        Linger(a, verb == "linger-flood");
    } else if (verb == "await-file") {
        const std::string path = RestOf(step);
        while (access(path.c_str(), F_OK) != 0)
            Sleep(5);
    } else if (verb == "write-argument") {
        std::ofstream(RestOf(step)) << argument;
    } else if (verb == "list-descriptors") {
        std::string found;  // looked for before the list's own file is open
        for (int descriptor = 3; descriptor < 256; ++descriptor) {
            if (fcntl(descriptor, F_GETFD) != -1) found += std::to_string(descriptor) + "\n";
        }
        std::ofstream(RestOf(step)) << found;
    } else if (verb == "make-backup") {
        MakeBackup(options);
    } else if (verb == "copy-backup") {
        fs::create_directories(options.at("-backuppath"));
        fs::copy(RestOf(step), options.at("-backuppath") + "/" + options.at("-target"),
                 fs::copy_options::recursive);
    } else if (verb == "sh") {
        RunShell(options, RestOf(step));
    } else if (verb == "close-pipe") {
        close(g_pipe);
    } else if (verb == "say") {
        std::fprintf(stderr, "%s\n", RestOf(step).c_str());
    } else if (verb == "ignore-signals") {
        std::signal(SIGTERM, SIG_IGN);
    } else if (verb == "end") {
        step >> a;
        std::_Exit(a);
    } else {
        std::fprintf(stderr, "no such step: %s\n", line.c_str());
        std::_Exit(98);
    }
}

}  // namespace

int main(int count, char** words) {
    const char* script = std::getenv("KRUTEIN_TOOL_SCRIPT");
    if (count != 2 || script == nullptr) {
        std::fprintf(stderr, "usage: KRUTEIN_TOOL_SCRIPT=file HandsetArchiver arguments\n");
        return 97;
    }
    const std::string argument = words[1];
    const Options options = Parse(argument);
    if (options.count("-pipe") != 0) g_pipe = std::atoi(options.at("-pipe").c_str());
    std::string path = script;
    if (options.count("-target") != 0) path += "." + options.at("-target");
    std::ifstream steps(access(path.c_str(), F_OK) == 0 ? path : script);
    std::string line;
    // list-descriptors must not see this stream.
    std::vector<std::string> lines;
    while (std::getline(steps, line))
        lines.push_back(line);
    steps.close();
    for (const std::string& step : lines)
        Do(step, argument);
    return 0;
}
