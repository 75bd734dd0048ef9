#pragma once

#include <sys/types.h>

#include <cstddef>

/// The process table of macOS as its sysctl gives it, filled from /proc. Sizes and offsets are those of
/// 64-bit macOS; what nobody here reads has no names.

#define CTL_KERN 1
#define KERN_PROC 14
#define KERN_PROC_ALL 0
#define MAXCOMLEN 16

struct extern_proc {
    char front[40];
    pid_t p_pid;
    char middle[199];
    char p_comm[MAXCOMLEN + 1];
    char back[36];
};

struct kinfo_proc {
    extern_proc kp_proc;
    char kp_eproc[352];
};

static_assert(offsetof(extern_proc, p_pid) == 40 && offsetof(extern_proc, p_comm) == 243);
static_assert(sizeof(extern_proc) == 296 && sizeof(kinfo_proc) == 648);

/// KERN_PROC_ALL only. Without a buffer it tells the bytes that are needed; one that is too small takes what
/// fits and is refused with ENOMEM.
#define sysctl krutein_sysctl  // the C library still has a dead one of that name
extern "C" int sysctl(int* name, unsigned names, void* old, std::size_t* oldBytes, void* fresh,
                      std::size_t freshBytes);

/// What the kernel does to those who ask for its process table.
struct ProcessTableFaults {
    int refused = 0;         ///< this many of the next reads find that the table has grown: ENOMEM
    int error = 0;           ///< reads fail with this error number
    std::size_t excess = 0;  ///< bytes of a record that is cut off behind the last one
    int reads = 0;           ///< counts them
};
extern ProcessTableFaults g_processTableFaults;
