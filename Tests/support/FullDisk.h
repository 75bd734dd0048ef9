#pragma once

#include <sys/resource.h>

#include <csignal>

/// While it lives, no file that this process and its children write can get longer than so many bytes, as on
/// a disk that is full then. Works on every file system and for every user.
class FullDisk {
 public:
    explicit FullDisk(rlim_t bytes) {
        std::signal(SIGXFSZ, SIG_IGN);
        getrlimit(RLIMIT_FSIZE, &m_before);
        rlimit full = m_before;
        full.rlim_cur = bytes;
        setrlimit(RLIMIT_FSIZE, &full);
    }
    ~FullDisk() { setrlimit(RLIMIT_FSIZE, &m_before); }
    FullDisk(const FullDisk&) = delete;
    FullDisk& operator=(const FullDisk&) = delete;

 private:
    rlimit m_before{};
};
