#include "Benchmarks/compare.d/Job.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>

#include "Benchmarks/compare.d/BenchTool.h"
#include "Module/BackupLib/BackupMgr.h"

namespace fs = std::filesystem;

Quiet::Quiet() : m_before(dup(STDERR_FILENO)) {
    const int nothing = open("/dev/null", O_WRONLY | O_CLOEXEC);
    dup2(nothing, STDERR_FILENO);
    close(nothing);
}

Quiet::~Quiet() {
    dup2(m_before, STDERR_FILENO);
    close(m_before);
}

std::string BenchToolPath() {
    const fs::path program = fs::read_symlink("/proc/self/exe");
    return (program.parent_path().parent_path() / "Frameworks" / "HandsetArchiver").string();
}

std::string RunSmallJob(const std::string& destination, bool oldLayout) {
    unsetenv(kBenchBackup);
    unsetenv(kBenchMessages);
    BenchDevice device(oldLayout);
    std::string folder = destination;
    // Without a catalogue it ends with a failure, which does not matter here.
    const Quiet quiet;
    CBackupMgr::GetInstance()->StartBackupSafe(&device, folder, nullptr, kBackupTypeSms, 0);
    const fs::path type = fs::path(destination) / "Velmora_SMS_Backup";
    return (fs::directory_iterator(type)->path() / "device").string();
}
