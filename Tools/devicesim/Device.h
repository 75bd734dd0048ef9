#pragma once

#include <cstdint>
#include <mutex>
#include <set>

#include "Host/SampleDevice/SampleDevice.h"
#include "Tools/devicesim/Connection.h"

namespace devicesim {

/// A device while it is connected. Any thread may use it.
class Device {
 public:
    Device(krutein::SampleDevice facts, std::uint64_t number);

    const krutein::SampleDevice& Facts() const { return m_facts; }
    const std::string& Udid() const { return m_facts.udid; }
    /// The daemon's number for it: another one each time that it is connected.
    std::uint64_t Number() const { return m_number; }

    /// A connection to one of the device's services, for as long as the object lives: it ends when the device
    /// is pulled out.
    class Line {
     public:
        Line(Device& device, const Connection& connection);
        ~Line();
        Line(const Line&) = delete;
        Line& operator=(const Line&) = delete;

     private:
        Device& m_device;
        const Connection& m_connection;
    };

    /// Ends all connections, also those that are about to be made.
    void PullOut();

 private:
    const krutein::SampleDevice m_facts;
    const std::uint64_t m_number;
    std::mutex m_mutex;
    std::set<const Connection*> m_connections;
    bool m_isOut = false;
};

}  // namespace devicesim
