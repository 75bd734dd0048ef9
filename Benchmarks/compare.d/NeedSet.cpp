#include <cstdlib>
#include <filesystem>
#include <set>

#include "Benchmarks/compare.d/Comparisons.h"
#include "Benchmarks/compare.d/Data.h"
#include "Benchmarks/compare.d/Job.h"
#include "Module/BackupLib/BackupMgr.h"
#include "Module/BackupLib/ConfigMgr.h"

namespace fs = std::filesystem;

std::vector<Comparison> NeedSetComparisons(const Scale& scale) {
    const std::string manifest = DataFolder() + "/Manifest.db";
    const std::string jobs = DataFolder() + "/need-jobs";
    Comparison comparison;
    comparison.name = "need set of " + std::to_string(scale.rows) + " rows";
    comparison.against = "sqlite3 shell, output dropped";
    comparison.goal = 0.8;
    comparison.items = scale.rows;
    comparison.prepare = [=] {
        fs::remove(manifest);
        MakeManifestDb(manifest, scale.rows);
    };
    comparison.prepareRound = [=] { fs::remove_all(jobs); };
    comparison.finish = [=] { fs::remove(manifest); };
    comparison.ours = [=] {
        const std::string backup = RunSmallJob(jobs, false);
        fs::create_directories(backup);
        fs::create_symlink(manifest, backup + "/Manifest.db");
        std::set<std::string> need;
        const double seconds = Timed([&] { CBackupMgr::GetInstance()->GetNeedFilesIOS10(need); });
        if (need.size() != static_cast<std::size_t>(scale.rows) / 100) std::exit(1);
        return seconds;
    };
    comparison.theirs = [=] {
        const std::string query = CConfigMgr::GetInstance()->GetSQL({"backup_SMS"});
        return RunProgram({"sqlite3", manifest, query});
    };
    Comparison limit;
    limit.name = "  limit of the need set: no text compared";
    limit.against = comparison.against;
    limit.prepare = comparison.prepare;
    limit.finish = comparison.finish;
    limit.ours = [=] {
        return RunProgram({"sqlite3", manifest, "SELECT fileID FROM Files WHERE flags = 9"});
    };
    limit.theirs = comparison.theirs;
    return {comparison, limit};
}
