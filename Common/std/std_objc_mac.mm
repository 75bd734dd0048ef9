#import <Foundation/Foundation.h>
#include <dispatch/dispatch.h>
#include <fcntl.h>
#include <sys/sysctl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "Common/std/platform.h"
#include "Common/std/std_objc.h"

namespace {

NSString* TextOf(const std::string& text) { return [NSString stringWithUTF8String:text.c_str()]; }

std::string TextOf(NSString* text) {
    const char* utf8 = text == nil ? nullptr : [text UTF8String];
    return utf8 == nullptr ? std::string() : std::string(utf8);
}

dispatch_queue_t BackgroundQueue() { return dispatch_get_global_queue(0, 0); }

/// All process records of the kernel, allocated with malloc; null with count 0 when it does not tell.
kinfo_proc* ProcessTable(std::size_t& count) {
    int name[] = {CTL_KERN, KERN_PROC, KERN_PROC_ALL, 0};
    count = 0;
    std::size_t bytes = 0;
    if (sysctl(name, 4, nullptr, &bytes, nullptr, 0) != 0) return nullptr;
    void* table = nullptr;
    for (;;) {
        bytes += bytes / 10;  // the table may grow between the two calls
        void* const larger = std::realloc(table, bytes);
        if (larger == nullptr) break;
        table = larger;
        std::size_t filled = bytes;
        if (sysctl(name, 4, table, &filled, nullptr, 0) == 0) {
            if (filled % sizeof(kinfo_proc) != 0) break;
            count = filled / sizeof(kinfo_proc);
            return static_cast<kinfo_proc*>(table);
        }
        if (errno != ENOMEM) break;
    }
    std::free(table);
    return nullptr;
}

}  // namespace

namespace krutein {

bool OpenPipe(int (&ends)[2]) {
    int fresh[2] = {kNoDescriptor, kNoDescriptor};
    if (pipe(fresh) != 0) return false;
    for (int i = 0; i < 2; ++i) {
        fcntl(fresh[i], F_SETFD, FD_CLOEXEC);
        ends[i] = fresh[i];
    }
    return true;
}

const std::size_t kNamesAtOnce = SIZE_MAX;

// The calls that look a name up in an open folder came with 10.10.

DIR* OpenFolderStream(const std::string& path, bool followLink) {
    struct stat info {};
    if (!followLink && (lstat(path.c_str(), &info) != 0 || S_ISLNK(info.st_mode))) return nullptr;
    return opendir(path.c_str());
}

DIR* OpenFolderIn(DIR* /*folder*/, const std::string& path, const char* name) {
    return OpenFolderStream(path + "/" + name, false);
}

bool StatIn(DIR* /*folder*/, const std::string& path, const char* name, struct stat& info) {
    return lstat((path + "/" + name).c_str(), &info) == 0;
}

bool RemoveIn(DIR* /*folder*/, const std::string& path, const char* name) {
    return unlink((path + "/" + name).c_str()) == 0;
}

bool RemoveFolderIn(DIR* /*folder*/, const std::string& path, const char* name) {
    return rmdir((path + "/" + name).c_str()) == 0;
}

}  // namespace krutein

std::string STD_OBJC_GetCurrentAppPath() {
    @autoreleasepool {
        return TextOf([[NSBundle mainBundle] executablePath]);
    }
}

bool STD_OBJC_ProcessExist(std::string name) {
    std::size_t count = 0;
    kinfo_proc* const table = ProcessTable(count);
    bool found = false;
    for (std::size_t i = count; i > 0 && !found; --i) {
        found = name == table[i - 1].kp_proc.p_comm;
    }
    std::free(table);
    return found;
}

bool STD_OBJC_CreateProcess(std::string launchPath, std::string argument) {
    @autoreleasepool {
        NSString* const program = TextOf(launchPath);
        NSString* const word = TextOf(argument);
        if (program == nil || word == nil) return false;  // no UTF-8
        @try {
            [NSTask launchedTaskWithLaunchPath:program arguments:[NSArray arrayWithObject:word]];
            return true;
        } @catch (NSException*) {  // no such program
            return false;
        }
    }
}

void STD_OBJC_ExcuteAsyncTask(void (*function)(void*), void* context) {
    dispatch_async(BackgroundQueue(), ^{
      if (function != nullptr) function(context);
    });
}

bool STD_OBJC_FILE_CopyFile(const char* source, const char* target) {
    if (source == nullptr || target == nullptr) return false;
    @autoreleasepool {
        NSFileManager* const files = [NSFileManager defaultManager];
        NSString* const from = TextOf(source);
        NSString* const to = TextOf(target);
        if (from == nil || to == nil) return false;
        if ([files fileExistsAtPath:from]) {
            if (krutein::RemovingWouldTake(target, source)) return false;
            [files removeItemAtPath:to error:nullptr];
        }
        return [files copyItemAtPath:from toPath:to error:nullptr];
    }
}

std::string GetOSXVersion() {
    @autoreleasepool {
        NSProcessInfo* const system = [NSProcessInfo processInfo];
        const std::string version = TextOf([system operatingSystemVersionString]);
        if (version.empty()) return {};
        const std::string name = TextOf([system operatingSystemName]);
        return version + (name.empty() ? "," : name);
    }
}
