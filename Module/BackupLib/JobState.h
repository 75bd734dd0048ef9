#pragma once

#include <atomic>

namespace krutein {

/// Whether the backup manager's job has been asked to stop. The manager writes it; the runner looks before it
/// forwards each progress message. It stands in a room of its own so that the two need not know each other.
inline std::atomic<bool>& JobCancelled() {
    static std::atomic<bool> cancelled{false};
    return cancelled;
}

}  // namespace krutein
