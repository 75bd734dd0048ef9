#pragma once

#include <atomic>
#include <exception>

namespace krutein {

/// Ends a long look into a backup from another thread: whoever looks checks it between two steps.
class Interrupt {
 public:
    class Raised : public std::exception {
     public:
        const char* what() const noexcept override { return "stopped"; }
    };

    void Raise() { m_raised = true; }
    bool IsRaised() const { return m_raised; }
    /// \throws Raised once it is.
    void Check() const {
        if (m_raised) throw Raised();
    }

 private:
    std::atomic<bool> m_raised{false};
};

}  // namespace krutein
