// Does what every backup does thousands of times, each a known number of times, with a mark for callgrind
// after each kind. Benchmarks/instructions reads what it counted.

#include <valgrind/callgrind.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <set>
#include <string>
#include <vector>

#include "Benchmarks/compare.d/BareHash.h"
#include "Benchmarks/compare.d/Data.h"
#include "Benchmarks/compare.d/Job.h"
#include "Common/ini/iniparser.h"
#include "Common/std/std_sha1.h"
#include "Module/BackupLib/BackupMgr.h"
#include "Module/BackupLib/mbdb/mbdb.h"

namespace fs = std::filesystem;

namespace {

constexpr int kItems = 2000;

/// Counts what `work` does kItems times. The mark is the path's name.
void Count(const char* path, const std::function<void()>& work) {
    CALLGRIND_START_INSTRUMENTATION;
    CALLGRIND_ZERO_STATS;
    work();
    CALLGRIND_DUMP_STATS_AT(path);
    CALLGRIND_STOP_INSTRUMENTATION;
}

[[noreturn]] void Fail(const char* path) {
    std::fprintf(stderr, "%s went wrong\n", path);
    std::exit(1);
}

void DecodeRecords() {
    const std::string path = DataFolder() + "/Manifest.mbdb";
    MakeMbdb(path, kItems);
    std::ifstream in(path, std::ios::binary);
    std::string image((std::istreambuf_iterator<char>(in)), {});
    mbdb_t* mbdb = nullptr;
    Count("decode-a-record", [&] {
        mbdb =
            mbdb_parse(reinterpret_cast<unsigned char*>(image.data()), static_cast<unsigned>(image.size()));
    });
    if (mbdb == nullptr || mbdb->records.size() != kItems) Fail("decoding");
    Count("encode-a-record", [&] { mbdb_save(mbdb, "/dev/null"); });
    mbdb_free(mbdb);
}

void MakeFileIDs() {
    std::vector<MadeFile> files;
    files.reserve(kItems);
    for (int n = 0; n < kItems; ++n)
        files.push_back(FileNumber(n));
    std::size_t length = STD_FILE_CalcDomainPathSha1A("", "").size();
    Count("file-id-with-hash", [&] {
        for (const MadeFile& file : files)
            length += STD_FILE_CalcDomainPathSha1A(file.domain, file.path).size();
    });
    if (length != std::size_t{40} * (kItems + 1)) Fail("file IDs");
}

/// What the hash alone takes is OpenSSL's, and depends on the processor.
void HashOnly() {
    std::vector<std::string> texts;
    texts.reserve(kItems);
    for (int n = 0; n < kItems; ++n)
        texts.push_back(FileNumber(n).domain + "-" + FileNumber(n).path);
    BareHash hash;
    unsigned sum = 0;
    Count("hash", [&] {
        for (const std::string& text : texts)
            sum += hash.Of(text);
    });
    if (sum == 0) Fail("hashing");
}

void UseDictionary() {
    constexpr int kKeys = 100;
    const std::string path = DataFolder() + "/keys.ini";
    std::ofstream out(path);
    out << "[section]\n";
    for (int n = 0; n < kItems; ++n)
        out << "key" << n << " = a value of usual length " << n << "\n";
    out.close();
    dictionary* read = nullptr;
    Count("read-an-ini-line", [&] { read = iniparser_load(path.c_str()); });
    if (read == nullptr || read->n != kItems + 1) Fail("reading");
    iniparser_freedict(read);

    dictionary* const few = dictionary_new(0);
    std::vector<std::string> keys;
    for (int n = 0; n < kKeys; ++n) {
        keys.push_back("section:key" + std::to_string(n));
        dictionary_set(few, keys.back().c_str(), "value");
    }
    int found = 0;
    Count("look-up-a-key", [&] {
        for (int n = 0; n < kItems; ++n)
            found +=
                dictionary_get(few, keys[static_cast<std::size_t>(n % kKeys)].c_str(), nullptr) != nullptr;
    });
    if (found != kItems) Fail("looking up");
    dictionary_del(few);
}

/// In folders of a few files each, which one thread prunes.
void PruneFiles() {
    const std::string tree = DataFolder() + "/tree";
    const std::vector<std::string> needed = MakeTree(tree, kItems, false);
    const std::string backup = RunSmallJob(DataFolder() + "/job", false);
    fs::remove_all(backup);
    fs::rename(tree, backup);
    std::set<std::string> need(needed.begin(), needed.end());
    Count("prune-a-file", [&] { CBackupMgr::GetInstance()->DeleteNoNeedFile(need); });
    if (!need.empty()) Fail("pruning");
}

}  // namespace

int main() {
    DecodeRecords();
    MakeFileIDs();
    HashOnly();
    UseDictionary();
    PruneFiles();
    std::printf("%d\n", kItems);
    return 0;
}
