#include "Host/kruteinctl/FacadeRun.h"

#include "Host/kruteinctl/StopTool.h"

FacadeRun& FacadeRun::Make(Session& session) {
    static auto* const run = new FacadeRun(session);
    return *run;
}

std::string FacadeRun::Backup(const std::string& udid, const std::string& folder) {
    m_session.Enter("backing up");
    GetSyncFactory()->GetBackup()->StartBackup(udid.c_str(), folder.c_str(), this);
    AwaitEnd("backup failed", "stopped; no backup was made");
    return m_path;
}

void FacadeRun::Restore(const std::string& udid, const std::string& folder) {
    m_session.Enter("restoring");
    GetSyncFactory()->GetBackup()->StartRestore(udid.c_str(), folder.c_str(), this);
    AwaitEnd("restore failed", "stopped; the device is restored in part only");
}

int FacadeRun::OnStateChange(int event, unsigned long long arg1, unsigned long long arg2, void* data) {
    const auto* const text = static_cast<const char*>(data);
    switch (event) {
        case kSyncEventBackupProgress:
        case kSyncEventRestoreProgress:
            m_session.Report(arg1, arg2, text == nullptr ? "" : text);
            break;
        case kSyncEventBackupDone:
        case kSyncEventBackupFailed:
        case kSyncEventRestoreDone:
        case kSyncEventRestoreFailed:
            m_session.Change([&] {
                m_ended = true;
                m_code = static_cast<int>(arg2);
                m_path = text == nullptr ? "" : text;
            });
            break;
        default:
            break;
    }
    return 0;
}

void FacadeRun::AwaitEnd(const std::string& failed, const std::string& stopped) {
    if (!m_session.AwaitOrStop([this] { return m_ended; })) {
        StopTool(m_session);
        throw Failure(ExitCode::kStopped, stopped);
    }
    if (m_code != 0) throw Failure::OfRun(failed, m_code);
}
