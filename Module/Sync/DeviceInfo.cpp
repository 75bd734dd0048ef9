#include "Module/Sync/DeviceInfo.h"

#include <libimobiledevice/libimobiledevice.h>
#include <libimobiledevice/lockdown.h>
#include <plist/plist.h>

#include <cstdlib>
#include <memory>

#include "Common/log/Log.h"

namespace {

constexpr char kSERVICE_DISK_USAGE[] = "com.apple.disk_usage";
constexpr char kAvailableKey[] = "TotalDataAvailable";
constexpr char kCapacityKey[] = "TotalDiskCapacity";

struct FreeNode {
    void operator()(void* node) const { plist_free(node); }
};
using Node = std::unique_ptr<void, FreeNode>;

struct FreeMemory {
    void operator()(void* memory) const { std::free(memory); }
};

/// \param domain  null for the global one.
/// \return null when the device does not tell.
Node Ask(lockdownd_client_private* client, const char* domain, const char* key) {
    plist_t value = nullptr;
    const lockdownd_error_t error = lockdownd_get_value(client, domain, key, &value);
    Node node(value);
    if (error != LOCKDOWN_E_SUCCESS) node.reset();
    return node;
}

/// The text of a global value; `value` is untouched when there is none.
void AskText(lockdownd_client_private* client, const char* key, std::string& value) {
    const Node node = Ask(client, nullptr, key);
    if (node == nullptr) return;
    char* text = nullptr;
    plist_get_string_val(node.get(), &text);
    const std::unique_ptr<char, FreeMemory> owned(text);
    if (text != nullptr) value = text;
}

}  // namespace

CDeviceInfo* CDeviceInfo::m_pInstance = nullptr;

CDeviceInfo* CDeviceInfo::GetInstance() {
    static CDeviceInfo* const instance = m_pInstance = new CDeviceInfo;
    return instance;
}

CDeviceInfo::~CDeviceInfo() {
    ReleaseLockdownd();
}

bool CDeviceInfo::Init(const char* udid) {
    if (udid == nullptr) {
        KRUTEIN_LOG("The input uuid is nullptr\n");
        return false;
    }
    ReleaseLockdownd();
    if (idevice_new(&m_device, udid) != IDEVICE_E_SUCCESS) {
        m_device = nullptr;
        KRUTEIN_LOG("[Init] idevice_new failed");
        return false;
    }
    if (lockdownd_client_new_with_handshake(m_device, &m_client, nullptr) != LOCKDOWN_E_SUCCESS) {
        m_client = nullptr;
        KRUTEIN_LOG("[Init] lockdownd_client_new_with_handshake failed");
        return false;
    }
    return true;
}

unsigned long long CDeviceInfo::GetAvailableSize() {
    return DiskUsage(kAvailableKey);
}

unsigned long long CDeviceInfo::GetUsedSize() {
    return GetDiskSize() - GetAvailableSize();
}

unsigned long long CDeviceInfo::GetDiskSize() {
    return DiskUsage(kCapacityKey);
}

void CDeviceInfo::GetDeviceName(std::function<void(const char*)> result) {
    Tell("DeviceName", result);
}

void CDeviceInfo::GetDeviceType(std::function<void(const char*)> result) {
    Tell("ProductType", result);
}

void CDeviceInfo::GetIOSVersion(std::function<void(const char*)> result) {
    Tell("ProductVersion", result);
}

void CDeviceInfo::GetLockdowndValue(lockdownd_client_private* client, char* key, std::string& value) {
    if (client == nullptr || key == nullptr) return;
    AskText(client, key, value);
}

void CDeviceInfo::ReleaseLockdownd() {
    if (m_client != nullptr) lockdownd_client_free(m_client);
    m_client = nullptr;
    if (m_device != nullptr) idevice_free(m_device);
    m_device = nullptr;
}

void CDeviceInfo::Dispose() {
    delete this;
}

unsigned long long CDeviceInfo::DiskUsage(const char* key) const {
    if (m_client == nullptr) {
        KRUTEIN_LOG("Invalid lockdownd client\n");
        return 0;
    }
    const Node node = Ask(m_client, kSERVICE_DISK_USAGE, key);
    if (node == nullptr) {
        // The one message for both questions: logs are searched for it.
        KRUTEIN_LOG("Cannot fetch the TotalDataAvailable from device\n");
        return 0;
    }
    std::uint64_t bytes = 0;  // stays when the value is no number
    plist_get_uint_val(node.get(), &bytes);
    return bytes;
}

void CDeviceInfo::Tell(const char* key, const std::function<void(const char*)>& result) const {
    if (m_client == nullptr || !result) return;
    std::string value;
    AskText(m_client, key, value);
    result(value.c_str());
}
