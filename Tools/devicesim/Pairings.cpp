#include "Tools/devicesim/Pairings.h"

#include <fmt/format.h>

#include <cstdint>
#include <random>

#include "Tools/devicesim/Plist.h"

namespace devicesim {

std::string NewUuid() {
    std::random_device random;
    const auto some = [&](std::uint32_t mask) { return random() & mask; };
    return fmt::format("{:08X}-{:04X}-4{:03X}-{:04X}-{:08X}{:04X}", some(0xFFFFFFFF), some(0xFFFF),
                       some(0xFFF), 0x8000U | some(0x3FFF), some(0xFFFFFFFF), some(0xFFFF));
}

std::string Pairings::Record(const std::string& udid) const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    const auto found = m_records.find(udid);
    return found == m_records.end() ? std::string() : found->second;
}

void Pairings::SaveRecord(const std::string& udid, const std::string& record) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_records[udid] = record;
}

void Pairings::RemoveRecord(const std::string& udid) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_records.erase(udid);
}

bool Pairings::Trusts(const std::string& udid, const std::string& hostId) const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    const auto found = m_trusted.find(udid);
    return found != m_trusted.end() && found->second.count(hostId) != 0;
}

void Pairings::Trust(const std::string& udid, const std::string& hostId) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_trusted[udid].insert(hostId);
}

void Pairings::Distrust(const std::string& udid, const std::string& hostId) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_trusted[udid].erase(hostId);
}

void Pairings::PairAsBefore(const std::string& udid) {
    if (!Record(udid).empty()) return;
    const std::string hostId = NewUuid();
    Plist record;
    record.Set("HostID", hostId).Set("SystemBUID", m_systemBuid);
    SaveRecord(udid, record.ToXml());
    Trust(udid, hostId);
}

}  // namespace devicesim
