#include "Tests/Module/BackupLib/RefusedMemory.h"

#include <cstdlib>
#include <new>

#include "Common/Export.h"

std::atomic<std::size_t> g_refusedBytes{0};

KRUTEIN_API void* operator new(std::size_t bytes) {
    void* const memory = bytes == g_refusedBytes && bytes > 0 ? nullptr : std::malloc(bytes > 0 ? bytes : 1);
    if (memory == nullptr) throw std::bad_alloc();
    return memory;
}

KRUTEIN_API void operator delete(void* memory) noexcept {
    std::free(memory);
}

KRUTEIN_API void operator delete(void* memory, std::size_t /*bytes*/) noexcept {
    std::free(memory);
}
