#include "Benchmarks/compare.d/Job.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>

#include "Module/BackupLib/BackupMgr.h"

namespace fs = std::filesystem;

namespace {

class BenchDevice : public IBaseDevice {
 public:
    explicit BenchDevice(bool old) : m_old(old) {}
    std::string GetName() override { return "bench"; }
    std::string GetSerialNumber() override { return "bench"; }
    std::string GetVersionString() override { return m_old ? "9.3.5" : "17.4.1"; }
    int GetMajorVersion() override { return m_old ? 9 : 17; }
    std::string GetProductType() override { return "bench"; }
    std::string GetDeviceID() override { return "device"; }

 private:
    bool m_old;
};

/// The programs that the library calls to end tools say on descriptor 2 what they did not find.
class NoErrors {
 public:
    NoErrors() : m_before(dup(STDERR_FILENO)) {
        const int nothing = open("/dev/null", O_WRONLY | O_CLOEXEC);
        dup2(nothing, STDERR_FILENO);
        close(nothing);
    }
    ~NoErrors() {
        dup2(m_before, STDERR_FILENO);
        close(m_before);
    }
    NoErrors(const NoErrors&) = delete;
    NoErrors& operator=(const NoErrors&) = delete;

 private:
    int m_before;
};

}  // namespace

std::string RunSmallJob(const std::string& destination, bool oldLayout) {
    unsetenv("KRUTEIN_BENCH_BACKUP");
    BenchDevice device(oldLayout);
    std::string folder = destination;
    // Without a catalogue it ends with a failure, which does not matter here.
    const NoErrors quiet;
    CBackupMgr::GetInstance()->StartBackupSafe(&device, folder, nullptr, kBackupTypeSms, 0);
    const fs::path type = fs::path(destination) / "Velmora_SMS_Backup";
    return (fs::directory_iterator(type)->path() / "device").string();
}
