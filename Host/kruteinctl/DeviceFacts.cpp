#include "Host/kruteinctl/DeviceFacts.h"

#include <fmt/format.h>
#include <libimobiledevice/libimobiledevice.h>
#include <libimobiledevice/lockdown.h>

#include <algorithm>
#include <memory>

#include "Host/kruteinctl/ConnectedDevices.h"
#include "Host/kruteinctl/Failure.h"
#include "Module/Sync/DeviceInfo.h"
#include "Module/Sync/SyncFactory.h"

namespace {

constexpr char kLabel[] = "kruteinctl";

struct FreeDevice {
    void operator()(idevice_t device) const { idevice_free(device); }
};
using Device = std::unique_ptr<idevice_private, FreeDevice>;

struct FreeClient {
    void operator()(lockdownd_client_t client) const { lockdownd_client_free(client); }
};
using Client = std::unique_ptr<lockdownd_client_private, FreeClient>;

Failure NoDevice(const std::string& udid) {
    return Failure(ExitCode::kNoDevice, fmt::format("no such device is connected: {}", udid));
}

Failure Gone(const std::string& udid) {
    return Failure(ExitCode::kDeviceGone, fmt::format("the device was disconnected in the middle: {}", udid));
}

/// Why a device cannot be talked with.
Failure FailureOf(lockdownd_error_t error) {
    switch (error) {
        case LOCKDOWN_E_PASSWORD_PROTECTED:
            return {ExitCode::kDeviceLocked,
                    "the device is locked: unlock it with its passcode and try again"};
        case LOCKDOWN_E_PAIRING_DIALOG_RESPONSE_PENDING:
            return {ExitCode::kNotPaired,
                    "the device does not trust this computer yet: unlock it, tap Trust on its screen and try "
                    "again"};
        case LOCKDOWN_E_USER_DENIED_PAIRING:
            return {
                ExitCode::kNotPaired,
                "the device's owner has refused to trust this computer: disconnect the device, connect it "
                "and tap Trust on its screen"};
        case LOCKDOWN_E_INVALID_HOST_ID:
        case LOCKDOWN_E_PAIRING_FAILED:
        case LOCKDOWN_E_INVALID_PAIR_RECORD:
        case LOCKDOWN_E_MISSING_PAIR_RECORD:
            return {ExitCode::kNotPaired,
                    "the device does not know this computer any more: pair it again by connecting it and "
                    "tapping Trust on its screen"};
        default:
            return {ExitCode::kFailed,
                    fmt::format("the device does not answer as it should (lockdown error {})",
                                static_cast<int>(error))};
    }
}

Device Open(const std::string& udid) {
    idevice_t device = nullptr;
    if (idevice_new(&device, udid.c_str()) != IDEVICE_E_SUCCESS) return nullptr;
    return Device(device);
}

std::string Text(const Client& client, std::string key) {
    std::string value;
    CDeviceInfo::GetLockdowndValue(client.get(), key.data(), value);
    return value;
}

bool IsStillThere(const std::string& udid) {
    return Open(udid) != nullptr;
}

/// The library only says that it cannot bind to a device; this tells why. It also asks for the one fact that
/// the library's device object does not have.
std::string SerialNumberOrFailure(const std::string& udid) {
    const Device device = Open(udid);
    if (device == nullptr) throw NoDevice(udid);
    lockdownd_client_t handle = nullptr;
    const lockdownd_error_t error = lockdownd_client_new_with_handshake(device.get(), &handle, kLabel);
    if (error != LOCKDOWN_E_SUCCESS) throw IsStillThere(udid) ? FailureOf(error) : Gone(udid);
    const Client client(handle);
    return Text(client, "SerialNumber");
}

DeviceFacts Ask(const std::string& udid) {
    DeviceFacts facts;
    facts.udid = udid;
    facts.serialNumber = SerialNumberOrFailure(udid);
    IDeviceInfo* const info = GetSyncFactory()->GetDeviceInfo(udid.c_str());
    if (info != nullptr) {
        info->GetDeviceName([&](const char* text) { facts.name = text; });
        info->GetDeviceType([&](const char* text) { facts.productType = text; });
        info->GetIOSVersion([&](const char* text) { facts.systemVersion = text; });
        facts.totalBytes = info->GetDiskSize();
        facts.availableBytes = info->GetAvailableSize();
    }
    // Unanswered questions look like a device that does not tell.
    if (!IsStillThere(udid)) throw Gone(udid);
    const bool saidNothing = facts.name.empty() && facts.productType.empty() && facts.totalBytes == 0;
    if (info == nullptr || saidNothing) throw FailureOf(LOCKDOWN_E_UNKNOWN_ERROR);
    CDeviceInfo::GetInstance()->ReleaseLockdownd();
    return facts;
}

}  // namespace

DeviceFacts AskFacts(const std::string& udid, Question::Clock::time_point deadline) {
    if (const std::vector<std::string> all = ConnectedUdids(deadline);
        std::find(all.begin(), all.end(), udid) == all.end()) {
        throw NoDevice(udid);
    }
    const QuestionFor<DeviceFacts> question([udid] { return Ask(udid); });
    const std::optional<DeviceFacts> facts = question.AwaitUntil(deadline);
    if (!facts) throw Failure(ExitCode::kDeviceSilent, "the device did not answer in time");
    return *facts;
}

DeviceFacts AskPublicFacts(const std::string& udid) {
    DeviceFacts facts;
    facts.udid = udid;
    const Device device = Open(udid);
    lockdownd_client_t handle = nullptr;
    if (device == nullptr || lockdownd_client_new(device.get(), &handle, kLabel) != LOCKDOWN_E_SUCCESS)
        return facts;
    const Client client(handle);
    facts.name = Text(client, "DeviceName");
    facts.productType = Text(client, "ProductType");
    facts.systemVersion = Text(client, "ProductVersion");
    return facts;
}
