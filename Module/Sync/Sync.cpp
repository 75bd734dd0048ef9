#include "Module/Sync/Sync.h"

#include "Common/log/LogHandler.h"
#include "Module/Sync/Backup.h"

namespace {

constexpr char kLogFile[] = "Sync.log";

}  // namespace

CSync* CSync::m_pSync = nullptr;

CSync* CSync::GetInstance() {
    static CSync* const instance = m_pSync = new CSync;
    InitLogA(kLogFile, nullptr);
    return instance;
}

IDeviceInfo* CSync::GetDeviceInfo(const char* /*udid*/) {
    return nullptr;
}

IBackup* CSync::GetBackup() {
    return CBackup::GetInstance();
}

extern "C" ISyncFactory* GetSyncFactory() {
    return CSync::GetInstance();
}
