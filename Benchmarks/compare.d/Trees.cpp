// Pruning a backup, and measuring a folder.

#include <cstdlib>
#include <filesystem>
#include <memory>
#include <set>

#include "Benchmarks/compare.d/Comparisons.h"
#include "Benchmarks/compare.d/Data.h"
#include "Benchmarks/compare.d/Job.h"
#include "Common/std/std_file.h"
#include "Module/BackupLib/BackupMgr.h"

namespace fs = std::filesystem;

namespace {

std::string Words(const char* what, int files) {
    return std::string(what) + " " + std::to_string(files) + " files";
}

Comparison Prune(int files, bool old) {
    const std::string base = DataFolder() + (old ? "/prune-old" : "/prune-new");
    const std::string ours = base + "/ours";
    const std::string theirs = base + "/theirs";
    auto messages = std::make_shared<std::vector<std::string>>();
    Comparison comparison;
    comparison.name = Words(old ? "prune, older layout," : "prune, newer layout,", files);
    comparison.against = "find -type f -delete";
    comparison.goal = old ? 0.9 : 0.75;
    comparison.items = files;
    comparison.prepareRound = [=] {
        fs::remove_all(base);
        *messages = MakeTree(ours, files, old);
        MakeTree(theirs, files, old);
        Settle();
    };
    comparison.finish = [=] { fs::remove_all(base); };
    comparison.ours = [=] {
        const std::string backup = RunSmallJob(base + "/job", old);
        fs::remove_all(backup);
        fs::rename(ours, backup);
        std::set<std::string> need(messages->begin(), messages->end());
        const double seconds = Timed([&] { CBackupMgr::GetInstance()->DeleteNoNeedFile(need); });
        if (!need.empty()) std::exit(1);
        return seconds;
    };
    comparison.theirs = [=] { return RunProgram({"find", theirs, "-type", "f", "-delete"}); };
    return comparison;
}

Comparison FolderSize(int files) {
    const std::string tree = DataFolder() + "/size";
    Comparison comparison;
    comparison.name = Words("size of a folder of", files);
    comparison.against = "du -s --apparent-size";
    comparison.goal = 0.8;
    comparison.items = files;
    comparison.prepare = [=] {
        MakeTree(tree, files, false);
        Settle();
    };
    comparison.finish = [=] { fs::remove_all(tree); };
    comparison.ours = [=] {
        return Timed([&] {
            if (STD_FILE_GetDirSizeA(tree) != 1024LL * files) std::exit(1);
        });
    };
    comparison.theirs = [=] { return RunProgram({"du", "-s", "--apparent-size", tree}); };
    return comparison;
}

}  // namespace

std::vector<Comparison> TreeComparisons(const Scale& scale) {
    return {Prune(scale.treeFiles, false), Prune(scale.treeFiles, true), FolderSize(scale.treeFiles)};
}
