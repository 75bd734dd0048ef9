// Loads a library and, if it is krutein, asks it for its interfaces.

#include <dlfcn.h>

#include <cstdio>

#include "Module/Sync/SyncFactory.h"

int main(int count, char** words) {
    if (count != 2) return 2;
    void* const library = dlopen(words[1], RTLD_NOW);
    if (library == nullptr) {
        std::fprintf(stderr, "%s\n", dlerror());
        return 1;
    }
    using Factory = decltype(&GetSyncFactory);
    const auto factory = reinterpret_cast<Factory>(dlsym(library, "GetSyncFactory"));
    if (factory == nullptr) return 0;
    ISyncFactory* const sync = factory();
    // There is no such device: what counts is that it was looked for.
    return sync->GetBackup() != nullptr && sync->GetDeviceInfo("none") == nullptr ? 0 : 1;
}
