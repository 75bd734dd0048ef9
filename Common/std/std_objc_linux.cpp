#include <dirent.h>
#include <fcntl.h>
#include <spawn.h>
#include <sys/utsname.h>
#include <unistd.h>

#include <climits>
#include <csignal>
#include <cstdio>
#include <memory>
#include <system_error>
#include <thread>
#include <vector>

#include "Common/std/platform.h"
#include "Common/std/std_objc.h"
#include "Common/std/std_string.h"

namespace {

/// What the kernel of the reference platform keeps of a process's name; queries are answered as it would.
constexpr std::size_t kProcessNameChars = 16;

std::string ReadLink(const std::string& path) {
    std::string target(PATH_MAX, '\0');
    for (;;) {
        const ssize_t length = readlink(path.c_str(), target.data(), target.size());
        if (length < 0) return {};
        if (static_cast<std::size_t>(length) < target.size()) {
            target.resize(static_cast<std::size_t>(length));
            return target;
        }
        target.resize(target.size() * 2);
    }
}

/// The program file that a process runs, also when the file has been removed or replaced since.
std::string ProgramPath(const std::string& process) {
    static constexpr char kRemoved[] = " (deleted)";
    constexpr std::size_t kRemovedChars = sizeof kRemoved - 1;
    std::string path = ReadLink("/proc/" + process + "/exe");
    if (path.size() > kRemovedChars &&
        path.compare(path.size() - kRemovedChars, kRemovedChars, kRemoved) == 0) {
        path.resize(path.size() - kRemovedChars);
    }
    return path;
}

/// What the process calls itself; at most 15 characters.
std::string CommandName(const std::string& process) {
    const std::unique_ptr<FILE, int (*)(FILE*)> file(std::fopen(("/proc/" + process + "/comm").c_str(), "re"),
                                                     &std::fclose);
    if (file == nullptr) return {};
    char name[64] = {};
    const std::size_t length = std::fread(name, 1, sizeof name - 1, file.get());
    std::string result(name, length);
    STD_RemoveLastCharIfExistA(result, '\n');
    return result;
}

/// The name of the program file. Where this user may not see another user's program, the name that the
/// process calls itself has to do.
std::string ProcessName(const std::string& process) {
    const std::string path = ProgramPath(process);
    if (path.empty()) return CommandName(process);
    return path.substr(path.rfind('/') + 1).substr(0, kProcessNameChars);
}

/// Starts a program without a shell, with no signal blocked. \return its id, or -1.
pid_t Spawn(const std::vector<std::string>& words) {
    std::vector<char*> arguments;
    arguments.reserve(words.size() + 1);
    for (const std::string& word : words)
        arguments.push_back(const_cast<char*>(word.c_str()));
    arguments.push_back(nullptr);

    posix_spawnattr_t attributes;
    if (posix_spawnattr_init(&attributes) != 0) return -1;
    sigset_t none;
    sigemptyset(&none);
    posix_spawnattr_setsigmask(&attributes, &none);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK);
    pid_t child = -1;
    const int result =
        posix_spawnp(&child, arguments.front(), nullptr, &attributes, arguments.data(), environ);
    posix_spawnattr_destroy(&attributes);
    return result == 0 ? child : -1;
}

constexpr int kOpenFolder = O_RDONLY | O_DIRECTORY | O_CLOEXEC;

/// Takes the descriptor over. \return null for none.
DIR* StreamOf(int descriptor) {
    if (descriptor < 0) return nullptr;
    DIR* const stream = fdopendir(descriptor);
    if (stream == nullptr) close(descriptor);
    return stream;
}

bool Run(const std::vector<std::string>& words) {
    int status = 0;
    const pid_t child = Spawn(words);
    return child > 0 && krutein::WaitForChild(child, status) && status == 0;
}

}  // namespace

namespace krutein {

bool OpenPipe(int (&ends)[2]) {
    return pipe2(ends, O_CLOEXEC) == 0;
}

const std::size_t kNamesAtOnce = 500;

DIR* OpenFolderStream(const std::string& path, bool followLink) {
    return StreamOf(open(path.c_str(), kOpenFolder | (followLink ? 0 : O_NOFOLLOW)));
}

DIR* OpenFolderIn(DIR* folder, const std::string& /*path*/, const char* name) {
    return StreamOf(openat(dirfd(folder), name, kOpenFolder | O_NOFOLLOW));
}

bool StatIn(DIR* folder, const std::string& /*path*/, const char* name, struct stat& info) {
    return fstatat(dirfd(folder), name, &info, AT_SYMLINK_NOFOLLOW) == 0;
}

bool RemoveIn(DIR* folder, const std::string& /*path*/, const char* name) {
    return unlinkat(dirfd(folder), name, 0) == 0;
}

bool RemoveFolderIn(DIR* folder, const std::string& /*path*/, const char* name) {
    return unlinkat(dirfd(folder), name, AT_REMOVEDIR) == 0;
}

}  // namespace krutein

std::string STD_OBJC_GetCurrentAppPath() {
    return ProgramPath("self");
}

bool STD_OBJC_ProcessExist(std::string name) {
    const std::unique_ptr<DIR, int (*)(DIR*)> processes(opendir("/proc"), &closedir);
    if (processes == nullptr) return false;
    while (const dirent* entry = readdir(processes.get())) {
        const std::string process = entry->d_name;
        if (STD_IsNumA(process) && ProcessName(process) == name) return true;
    }
    return false;
}

bool STD_OBJC_CreateProcess(std::string launchPath, std::string argument) {
    // A name without a slash would be looked up in PATH; a launch path never is.
    if (launchPath.find('/') == std::string::npos) launchPath.insert(0, "./");
    const pid_t child = Spawn({launchPath, argument});
    if (child <= 0) return false;
    krutein::ReapInBackground(child);
    return true;
}

void STD_OBJC_ExcuteAsyncTask(void (*function)(void*), void* context) {
    if (function == nullptr) return;
    try {
        std::thread(function, context).detach();
    } catch (const std::system_error&) {
        function(context);  // no thread to be had: late is better than never
    }
}

bool STD_OBJC_FILE_CopyFile(const char* source, const char* target) {
    if (source == nullptr || target == nullptr || access(source, F_OK) != 0) return false;
    if (krutein::RemovingWouldTake(target, source)) return false;
    Run({"rm", "-rf", "--", target});
    return Run({"cp", "-a", "-T", "--", source, target});
}

std::string GetOSXVersion() {
    utsname system{};
    if (uname(&system) != 0 || system.release[0] == '\0') return {};
    const std::string name = system.sysname;
    return std::string(system.release) + (name.empty() ? "," : name);
}
