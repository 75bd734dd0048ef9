#pragma once

#include <chrono>
#include <string>

namespace devicesim {

/// One end of a stream socket. One thread reads and writes; Shutdown may come from any thread and makes both
/// end at once.
class Connection {
 public:
    /// Takes the descriptor over.
    explicit Connection(int descriptor) : m_descriptor(descriptor) {}
    ~Connection();
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    /// Reads exactly so many bytes, however long they take.
    /// \return false when the connection ends before; `bytes` is of no use then.
    bool Read(std::string& bytes, std::size_t count) const;

    /// Writes all bytes, however long that takes. \return false when the connection has ended.
    bool Write(const std::string& bytes) const;

    /// Writes all bytes if that takes no waiting; else ends the connection, whose client does not read.
    bool WriteAtOnce(const std::string& bytes) const;

    /// Lets time pass. \return false, at once, when the other side has gone.
    bool Pause(std::chrono::milliseconds time) const;

    /// Waits until the other side has gone.
    void AwaitEnd() const;

    void Shutdown() const;

 private:
    int m_descriptor;
};

}  // namespace devicesim
