#pragma once

#include <cstdint>
#include <string>

#include "Host/kruteinctl/Session.h"

/// The folder that a command writes to: made where there is none, and gone again when nothing came into it.
class Destination {
 public:
    /// \throws Failure (not writable).
    explicit Destination(const std::string& folder);
    ~Destination();
    Destination(const Destination&) = delete;
    Destination& operator=(const Destination&) = delete;

    /// Tells the user both numbers. \throws Failure (disk full) with them when there is not enough.
    void CheckSpace(Session& session, std::uint64_t neededBytes) const;

 private:
    std::string m_folder;
    bool m_isNew;
};
