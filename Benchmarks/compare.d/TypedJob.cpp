// A whole typed job, from the end of the tool to the record, against what its parts take one by one.

#include <sqlite3.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <set>

#include "Benchmarks/compare.d/BenchTool.h"
#include "Benchmarks/compare.d/Comparisons.h"
#include "Benchmarks/compare.d/Data.h"
#include "Benchmarks/compare.d/Job.h"
#include "Common/std/std_file.h"
#include "Module/BackupLib/BackupMgr.h"

namespace fs = std::filesystem;

namespace {

/// A backup of so many files, with a catalogue and messages.
void MakeBackup(const std::string& folder, int files) {
    MakeTree(folder, files, false);
    MakeManifestDb(folder + "/Manifest.db", files);
    MakeMessages(folder);
    Settle();
}

double Now() {
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

double WholeJob(const std::string& backup, const std::string& base) {
    const std::string endFile = base + "/end";
    setenv(kBenchBackup, backup.c_str(), 1);
    setenv(kBenchEnd, endFile.c_str(), 1);
    BenchDevice device(false);
    std::string folder = base + "/jobs";
    const Quiet quiet;
    if (CBackupMgr::GetInstance()->StartBackupSafe(&device, folder, nullptr, kBackupTypeSms, 0) != 0)
        std::exit(1);
    const double done = Now();
    double end = 0;
    std::ifstream(endFile) >> end;
    return done - end - kFixedPauseSeconds;
}

double Parts(const std::string& backup, const std::string& base) {
    const std::string place = RunSmallJob(base + "/parts", false);
    fs::remove_all(place);
    fs::rename(backup, place);
    std::set<std::string> need;
    return Timed([&] {
        CBackupMgr::GetInstance()->GetNeedFilesIOS10(need);
        CBackupMgr::GetInstance()->DeleteNoNeedFile(need);
        if (STD_FILE_GetDirSizeA(place) == 0) std::exit(1);
    });
}

}  // namespace

std::vector<Comparison> JobComparisons(const Scale& scale) {
    const std::string base = DataFolder() + "/typed";
    Comparison comparison;
    comparison.name = "typed job after the tool, " + std::to_string(scale.jobFiles) + " files";
    comparison.against = "need set, prune and size alone";
    comparison.goal = 1.1;
    comparison.items = scale.jobFiles;
    comparison.prepareRound = [=] {
        fs::remove_all(base);
        MakeBackup(base + "/ours", scale.jobFiles);
        MakeBackup(base + "/theirs", scale.jobFiles);
    };
    comparison.finish = [=] { fs::remove_all(base); };
    comparison.ours = [=] { return WholeJob(base + "/ours", base); };
    comparison.theirs = [=] { return Parts(base + "/theirs", base); };
    return {comparison};
}
