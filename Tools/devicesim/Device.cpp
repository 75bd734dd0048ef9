#include "Tools/devicesim/Device.h"

#include <utility>

namespace devicesim {

Device::Device(krutein::SampleDevice facts, std::uint64_t number)
    : m_facts(std::move(facts)), m_number(number) {}

Device::Line::Line(Device& device, const Connection& connection)
    : m_device(device), m_connection(connection) {
    const std::lock_guard<std::mutex> lock(m_device.m_mutex);
    m_device.m_connections.insert(&connection);
    if (m_device.m_isOut) connection.Shutdown();
}

Device::Line::~Line() {
    const std::lock_guard<std::mutex> lock(m_device.m_mutex);
    m_device.m_connections.erase(&m_connection);
}

void Device::PullOut() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_isOut = true;
    for (const Connection* connection : m_connections)
        connection->Shutdown();
}

}  // namespace devicesim
