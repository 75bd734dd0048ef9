#pragma once

#include <stdexcept>

namespace krutein {

/// Something in a backup is not as it was written; the message tells what, with its path.
class BackupDamage : public std::runtime_error {
 public:
    using std::runtime_error::runtime_error;
};

}  // namespace krutein
