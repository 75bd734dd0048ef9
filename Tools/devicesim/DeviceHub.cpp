#include "Tools/devicesim/DeviceHub.h"

#include <algorithm>
#include <utility>

#include "Tools/devicesim/Frames.h"

namespace devicesim {
namespace {

constexpr std::uint64_t kProductId = 0x12A8;
constexpr std::uint64_t kLocationBase = 0x14000000;
constexpr std::uint32_t kNoticeTag = 0;
constexpr std::size_t kDashAt = 8;
constexpr std::size_t kDashedChars = 25;

/// Over USB, newer devices tell their identifier without its dash.
std::string UsbSerial(std::string udid) {
    if (udid.size() == kDashedChars && udid[kDashAt] == '-') udid.erase(kDashAt, 1);
    return udid;
}

Plist AttachedMessage(const Device& device) {
    Plist properties;
    properties.Set("ConnectionType", "USB")
        .Set("DeviceID", device.Number())
        .Set("LocationID", kLocationBase + device.Number())
        .Set("ProductID", kProductId)
        .Set("SerialNumber", UsbSerial(device.Udid()));
    Plist message;
    message.Set("MessageType", "Attached").Set("DeviceID", device.Number());
    message.Set("Properties", std::move(properties));
    return message;
}

Plist DetachedMessage(std::uint64_t number) {
    Plist message;
    message.Set("MessageType", "Detached").Set("DeviceID", number);
    return message;
}

void SendNotice(const Connection& listener, const Plist& notice) {
    const std::string payload = notice.ToXml();
    listener.WriteAtOnce(DaemonHeader(static_cast<std::uint32_t>(payload.size()), kNoticeTag) + payload);
}

}  // namespace

DeviceHub::DeviceHub(std::function<void(const Device& device, const char* what)> report)
    : m_report(std::move(report)) {}

void DeviceHub::Update(const std::vector<krutein::SampleDevice>& devices) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    std::set<std::string> wanted;
    for (const krutein::SampleDevice& device : devices)
        wanted.insert(device.udid);
    std::vector<std::uint64_t> gone;
    std::set<std::string> present;
    for (const auto& [number, device] : m_devices) {
        present.insert(device->Udid());
        if (wanted.count(device->Udid()) == 0) gone.push_back(number);
    }
    for (const std::uint64_t number : gone)
        DetachLocked(number);
    for (const krutein::SampleDevice& device : devices) {
        if (present.count(device.udid) == 0) Attach(device);
    }
}

void DeviceHub::Detach(const Device& device) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    DetachLocked(device.Number());
}

std::shared_ptr<Device> DeviceHub::Find(std::uint64_t number) const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    const auto found = m_devices.find(number);
    return found == m_devices.end() ? nullptr : found->second;
}

std::vector<Plist> DeviceHub::List() const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    std::vector<Plist> messages;
    messages.reserve(m_devices.size());
    for (const auto& [number, device] : m_devices)
        messages.push_back(AttachedMessage(*device));
    return messages;
}

void DeviceHub::Listen(const Connection& listener) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    for (const auto& [number, device] : m_devices)
        SendNotice(listener, AttachedMessage(*device));
    m_listeners.insert(&listener);
}

void DeviceHub::Forget(const Connection& listener) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_listeners.erase(&listener);
}

void DeviceHub::Attach(const krutein::SampleDevice& device) {
    const std::uint64_t number = ++m_lastNumber;
    const auto attached = std::make_shared<Device>(device, number);
    m_devices[number] = attached;
    if (m_report) m_report(*attached, "attached");
    Notify(AttachedMessage(*attached));
}

void DeviceHub::DetachLocked(std::uint64_t number) {
    const auto found = m_devices.find(number);
    if (found == m_devices.end()) return;
    const std::shared_ptr<Device> device = found->second;
    m_devices.erase(found);
    if (m_report) m_report(*device, "detached");
    Notify(DetachedMessage(number));
    device->PullOut();
}

void DeviceHub::Notify(const Plist& notice) const {
    for (const Connection* listener : m_listeners)
        SendNotice(*listener, notice);
}

}  // namespace devicesim
