#include "Host/kruteinctl/DeviceQuery.h"

#include <regex>
#include <thread>

#include "Host/kruteinctl/StopTool.h"
#include "Module/BackupLib/MobileBackupTask.h"

namespace {

/// Runs the query on a thread of its own, so that the user can be shown that something happens, and stop it.
class Query : public CCallBack {
 public:
    Query(Session& session, const std::string& udid, const std::string& folder)
        : m_session(session), m_thread([this, udid, folder] { Run(udid, folder); }) {}
    ~Query() { m_thread.join(); }
    Query(const Query&) = delete;
    Query& operator=(const Query&) = delete;

    int OnStateChange(CallBackType /*type*/, unsigned long long /*arg1*/, unsigned long long /*arg2*/,
                      void* data) override {
        if (data != nullptr) m_text = static_cast<const char*>(data);
        return 0;
    }

    std::string Answer() {
        if (!m_session.AwaitOrStop([this] { return m_ended; })) {
            StopTool(m_session);
            throw Failure(ExitCode::kStopped, "stopped");
        }
        if (m_code != 0) throw Failure::OfRun("the device could not be asked", m_code);
        return m_text;
    }

 private:
    void Run(const std::string& udid, const std::string& folder) {
        CMobileBackupTask task;
        const int code = task.StartGetBackupInfo(folder, udid, this, nullptr);
        m_session.Change([&] {
            m_code = code;
            m_ended = true;
        });
    }

    Session& m_session;
    std::string m_text;  ///< written while the run lasts, read when it has ended
    int m_code = 0;
    bool m_ended = false;
    std::thread m_thread;
};

}  // namespace

std::uint64_t QueryBackupSize(Session& session, const std::string& udid, const std::string& folder) {
    return SizeIn(Query(session, udid, folder).Answer());
}

std::uint64_t SizeIn(const std::string& text) {
    static const std::regex line("(?:^|\n)Total size: ([0-9]{1,18}) bytes(?:\r?\n|$)");
    std::smatch found;
    if (!std::regex_search(text, found, line)) {
        throw Failure(ExitCode::kFailed, "the backup tool did not tell a size");
    }
    return std::stoull(found[1]);
}
