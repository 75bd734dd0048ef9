#pragma once

/// As much of libdispatch as the system services use: the global queue, in dispatch.cpp on plain threads.

typedef struct dispatch_queue_s*
    dispatch_queue_t;  // NOLINT(modernize-use-using): as the system's header has it

extern "C" {

/// The one global queue, whatever is asked for.
dispatch_queue_t dispatch_get_global_queue(long priority, unsigned long flags);

/// Runs a copy of the block on a thread of its own. As on macOS, all signals are blocked there.
void dispatch_async(dispatch_queue_t queue, void (^block)(void));
}
