#pragma once

#include <atomic>
#include <cstddef>

/// A test program that is built with this has allocation functions of its own, in front of the system's:
/// there is no memory for single objects of this many bytes. 0 refuses nothing.
extern std::atomic<std::size_t> g_refusedBytes;
