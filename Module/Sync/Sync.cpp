#include "Module/Sync/Sync.h"

#include "Common/log/LogHandler.h"
#include "Module/Sync/Backup.h"
#include "Module/Sync/DeviceInfo.h"

namespace {

constexpr char kLogFile[] = "Sync.log";

}  // namespace

CSync* CSync::m_pSync = nullptr;

CSync* CSync::GetInstance() {
    static CSync* const instance = m_pSync = new CSync;
    InitLogA(kLogFile, nullptr);
    return instance;
}

IDeviceInfo* CSync::GetDeviceInfo(const char* udid) {
    CDeviceInfo* const device = CDeviceInfo::GetInstance();
    return device->Init(udid == nullptr ? "" : udid) ? device : nullptr;
}

IBackup* CSync::GetBackup() {
    return CBackup::GetInstance();
}

extern "C" ISyncFactory* GetSyncFactory() {
    return CSync::GetInstance();
}
