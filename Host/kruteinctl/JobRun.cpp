#include "Host/kruteinctl/JobRun.h"

#include <fmt/format.h>

#include <ctime>
#include <filesystem>
#include <set>
#include <thread>

#include "Common/std/std_process.h"
#include "Host/kruteinctl/Encryption.h"
#include "Host/kruteinctl/Record.h"
#include "Host/kruteinctl/Text.h"
#include "Module/BackupLib/BackupMgr.h"
#include "Module/BackupLib/ConfigMgr.h"

namespace fs = std::filesystem;

namespace {

constexpr std::chrono::seconds kStopAgainAfter{1};

/// The folders of earlier jobs of a type, and which one a new job has added.
class JobFolders {
 public:
    JobFolders(const std::string& folder, int type)
        : m_folder(fs::path(folder) / CConfigMgr::GetInstance()->GetForderNameFromBackupType(type)),
          m_before(Names()) {}

    /// The new one; "" when there is none.
    std::string Added() const {
        for (const std::string& name : Names()) {
            if (m_before.count(name) == 0) return (m_folder / name).string();
        }
        return {};
    }

    /// True when a job that starts now would get the folder of an earlier one: they are named by the second.
    bool IsTaken() const {
        const std::time_t now = std::time(nullptr);
        std::tm local{};
        localtime_r(&now, &local);
        char name[32] = {};
        std::strftime(name, sizeof name, "%Y_%m_%d__%H_%M_%S", &local);
        return m_before.count(name) > 0;
    }

 private:
    std::set<std::string> Names() const {
        std::set<std::string> names;
        std::error_code error;
        for (const fs::directory_entry& entry : fs::directory_iterator(m_folder, error))
            names.insert(entry.path().filename().string());
        return names;
    }

    fs::path m_folder;
    std::set<std::string> m_before;
};

/// The job on a thread of its own, with its progress on the session.
class Job : public CCallBack {
 public:
    Job(Session& session, IBaseDevice& device, const std::string& folder, int type)
        : m_session(session), m_thread([this, &device, copy = std::string(folder), type]() mutable {
              const int result = CBackupMgr::GetInstance()->StartBackupSafe(&device, copy, this, type, 0);
              m_session.Change([&] {
                  m_result = result;
                  m_ended = true;
              });
          }) {}
    ~Job() { m_thread.join(); }
    Job(const Job&) = delete;
    Job& operator=(const Job&) = delete;

    int OnStateChange(CallBackType /*type*/, unsigned long long arg1, unsigned long long arg2,
                      void* data) override {
        m_session.Report(arg1, arg2, data == nullptr ? "" : static_cast<const char*>(data));
        // What the job does with the files then takes its time, and nobody counts it.
        if (arg2 > 0 && arg1 >= arg2) m_session.Enter("finishing");
        return 0;
    }

    int Result() {
        const auto ended = [this] { return m_ended; };
        if (m_session.AwaitOrStop(ended)) return m_result;
        m_session.Enter("stopping");
        // A tool that is just being started is not hit by the first stop.
        do {
            CBackupMgr::GetInstance()->StopBackup();
        } while (!m_session.Await(ended, kStopAgainAfter));
        return m_result;
    }

 private:
    Session& m_session;
    bool m_ended = false;
    int m_result = 0;
    std::thread m_thread;
};

/// True also when what comes last of the things that matter is in it.
bool HasWholeRecord(const std::string& job) {
    const std::optional<Record> record = ReadRecord(job);
    return record && record->isValid;
}

/// Removes what the job has made, which the manager knows best: another process may have added a folder too.
void RemoveJob(const std::string& job) {
    CBackupMgr::GetInstance()->DeleteFailBackupFiles();
    std::error_code ignored;  // refused, and rightly, when other jobs of the type are there
    fs::remove(fs::path(job).parent_path(), ignored);
}

}  // namespace

std::string RunJob(Session& session, IBaseDevice& device, const std::string& folder, int type,
                   bool keepFailed) {
    if (ps_ExistProcess("HandsetArchiver")) {
        throw Failure(ExitCode::kFailed,
                      "another backup is running on this computer; a typed backup would end its tool");
    }
    const JobFolders folders(folder, type);
    session.Enter("backing up");
    while (folders.IsTaken())
        ps_sleep(100);
    int result = Job(session, device, folder, type).Result();
    std::string job = folders.Added();
    // The library does not notice when the disk gets full while it writes the record.
    if (result == kJobDone && !HasWholeRecord(job)) result = kJobRecordNotWritten;
    if (result == kJobDone) return job;
    const bool encrypted = !job.empty() && IsEncrypted(job + "/" + device.GetDeviceID());
    if (!keepFailed && !job.empty()) RemoveJob(job);
    const std::string kept =
        keepFailed && !job.empty() ? fmt::format("; what there is stays in {}", Printable(job)) : "";
    if (encrypted && result != kJobCancelled && result != kJobRecordNotWritten)
        throw Failure(ExitCode::kEncrypted, std::string(kEncryptedText) + kept);
    throw Failure::OfJob(result, kept);
}
