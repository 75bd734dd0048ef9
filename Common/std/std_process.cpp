#include "Common/std/std_process.h"

#include <cerrno>
#include <cstdlib>
#include <ctime>

#include "Common/std/format.h"
#include "Common/std/platform.h"
#include "Common/std/std_objc.h"
#include "Common/std/std_string.h"

namespace {

constexpr int kKillAllAttempts = 5;

}  // namespace

int ps_sleep(int milliseconds) {
    if (milliseconds < 1) return 0;
    timespec left{milliseconds / 1000, (milliseconds % 1000) * 1000000L};
    int result = 0;
    do {
        result = nanosleep(&left, &left);
    } while (result != 0 && errno == EINTR);
    return result;
}

bool ps_killAllProcess(const char* name) {
    if (name == nullptr || *name == '\0') return false;
    std::string command;
    if (!krutein::FormatWhole(command, "pkill %s", name)) return true;
    for (int attempt = 0; attempt < kKillAllAttempts; ++attempt) {
        if (std::system(command.c_str()) >= 0) break;
    }
    return true;
}

bool ps_killProcess(int pid) {
    if (pid < 1) return false;
    int killer = 0;
    if (STD_OBJC_System(STD_FormatA("kill -9 %d", pid).c_str(), &killer, false, nullptr) == 0) {
        krutein::ReapInBackground(killer);
    }
    return true;
}

bool ps_createProcess(std::string commandLine, int* pid, bool wait) {
    int child = 0;
    if (STD_OBJC_System(commandLine.c_str(), &child, false, nullptr) != 0 || child < 1) return false;
    if (pid != nullptr) *pid = child;
    int status = 0;
    if (wait) krutein::WaitForChild(child, status);
    return true;
}

bool ps_ExistProcess(const char* name) {
    return name != nullptr && *name != '\0' && STD_OBJC_ProcessExist(name);
}

bool ps_getAllProcessID(std::vector<int>& ids) {
    ids.clear();
    return true;
}

bool ps_getProcessNameByID(int /*pid*/, std::string& /*name*/) {
    return false;
}

void* ps_loadLibrary(const char* /*path*/) {
    return nullptr;
}

void* ps_getProcAddress(void* /*library*/, const char* /*symbol*/) {
    return nullptr;
}

void* ps_getProcAddress(const char* /*symbol*/, int /*ordinal*/) {
    return nullptr;
}

bool ps_getEnv(std::string /*name*/, std::string& /*value*/) {
    return false;
}

bool ps_addEnv(std::string /*name*/, std::string /*value*/) {
    return false;
}

bool ps_killProcessWhenPathInFolder(std::vector<std::string>& /*paths*/,
                                    std::vector<std::string>& /*folders*/) {
    return false;
}
