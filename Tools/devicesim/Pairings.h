#pragma once

#include <map>
#include <mutex>
#include <set>
#include <string>

namespace devicesim {

/// A new identifier of the usual form: "0A1B2C3D-1234-4ABC-8DEF-0123456789AB".
std::string NewUuid();

/// Who trusts whom: this computer's pair records, and the computers that each device trusts. Kept in memory
/// only. Any thread may use it.
class Pairings {
 public:
    /// The identifier of this computer.
    const std::string& SystemBuid() const { return m_systemBuid; }

    /// The pair record of a device; "" when there is none.
    std::string Record(const std::string& udid) const;
    void SaveRecord(const std::string& udid, const std::string& record);
    void RemoveRecord(const std::string& udid);

    /// Whether the device knows the computer that gives itself this identifier.
    bool Trusts(const std::string& udid, const std::string& hostId) const;
    void Trust(const std::string& udid, const std::string& hostId);
    void Distrust(const std::string& udid, const std::string& hostId);

    /// Pairs a device with this computer as its owner would have done before, unless it is paired.
    void PairAsBefore(const std::string& udid);

 private:
    const std::string m_systemBuid = NewUuid();
    mutable std::mutex m_mutex;
    std::map<std::string, std::string> m_records;            ///< by UDID
    std::map<std::string, std::set<std::string>> m_trusted;  ///< identifiers of computers by UDID
};

}  // namespace devicesim
