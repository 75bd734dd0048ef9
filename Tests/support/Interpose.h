#pragma once

#include <dlfcn.h>

/// The function of the system that a test program's own function of that name stands in front of.
template <typename Function>
Function* RealFunction(const char* name) {
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}
