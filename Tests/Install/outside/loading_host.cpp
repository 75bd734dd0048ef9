// A host that knows the library's headers only, and loads the library itself when it runs.

#include <dlfcn.h>

#include <cstdio>

#include "Module/Sync/SyncFactory.h"

int main(int count, char** words) {
    if (count != 2) return 2;
    void* const library = dlopen(words[1], RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr) {
        std::fprintf(stderr, "%s\n", dlerror());
        return 1;
    }
    void* const found = dlsym(library, "GetSyncFactory");
    if (found == nullptr) {
        std::fprintf(stderr, "%s\n", dlerror());
        return 1;
    }
    ISyncFactory* const factory = reinterpret_cast<decltype(&GetSyncFactory)>(found)();
    if (factory == nullptr || factory->GetBackup() == nullptr) return 1;
    std::puts("found");
    return 0;
}
