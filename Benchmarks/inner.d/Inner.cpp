// The inner functions one by one, for work on one of them. What users feel is measured by Benchmarks/compare.

#include <benchmark/benchmark.h>

#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "Benchmarks/compare.d/Data.h"
#include "Common/ini/iniparser.h"
#include "Common/std/std_path.h"
#include "Common/std/std_sha1.h"
#include "Common/std/std_string.h"
#include "Module/BackupLib/mbdb/mbdb.h"

namespace {

constexpr int kRecords = 1000;

std::string CatalogueImage(int records) {
    const std::string path = DataFolder() + "/Manifest.mbdb";
    MakeMbdb(path, records);
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

mbdb_t* Parsed(std::string& image) {
    return mbdb_parse(reinterpret_cast<unsigned char*>(image.data()), static_cast<unsigned>(image.size()));
}

void DecodeRecords(benchmark::State& state) {
    std::string image = CatalogueImage(kRecords);
    for ([[maybe_unused]] auto each : state)
        mbdb_free(Parsed(image));
    state.SetItemsProcessed(state.iterations() * kRecords);
}
BENCHMARK(DecodeRecords);

void EncodeRecords(benchmark::State& state) {
    std::string image = CatalogueImage(kRecords);
    mbdb_t* const mbdb = Parsed(image);
    for ([[maybe_unused]] auto each : state)
        mbdb_save(mbdb, "/dev/null");
    mbdb_free(mbdb);
    state.SetItemsProcessed(state.iterations() * kRecords);
}
BENCHMARK(EncodeRecords);

void CopyARecord(benchmark::State& state) {
    std::string image = CatalogueImage(1);
    mbdb_t* const mbdb = Parsed(image);
    for ([[maybe_unused]] auto each : state) {
        mbdb_t* const copies = mbdb_create();
        benchmark::DoNotOptimize(mbdb_insert_record(copies, mbdb->records[0], MBDB_INSERT_COPY));
        mbdb_free(copies);
    }
    mbdb_free(mbdb);
}
BENCHMARK(CopyARecord);

void MakeAFileID(benchmark::State& state) {
    const MadeFile file = FileNumber(1);
    for ([[maybe_unused]] auto each : state)
        benchmark::DoNotOptimize(STD_FILE_CalcDomainPathSha1A(file.domain, file.path));
}
BENCHMARK(MakeAFileID);

/// Of so many keys, as configuration files and records have them and as they do not.
void LookUpAKey(benchmark::State& state) {
    dictionary* const d = dictionary_new(0);
    for (int n = 0; n < state.range(0); ++n)
        dictionary_set(d, ("section:key" + std::to_string(n)).c_str(), "value");
    const std::string last = "SECTION:key" + std::to_string(state.range(0) - 1);
    for ([[maybe_unused]] auto each : state)
        benchmark::DoNotOptimize(iniparser_getstring(d, last.c_str(), nullptr));
    dictionary_del(d);
}
BENCHMARK(LookUpAKey)->Arg(10)->Arg(100)->Arg(10'000);

void ReadIni(benchmark::State& state) {
    const std::string path = DataFolder() + "/keys.ini";
    std::ofstream out(path);
    for (int n = 0; n < state.range(0); ++n)
        out << "key" << n << " = a value of usual length\n";
    out.close();
    for ([[maybe_unused]] auto each : state)
        iniparser_freedict(iniparser_load(path.c_str()));
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(ReadIni)->Arg(10)->Arg(10'000);

void NormaliseAPath(benchmark::State& state) {
    const std::string path = "C:\\a folder//with/both\\kinds of\\separators//and a name";
    for ([[maybe_unused]] auto each : state) {
        std::string copy = path;
        STD_PATH_FormatA(copy);
        benchmark::DoNotOptimize(copy);
    }
}
BENCHMARK(NormaliseAPath);

void SplitAText(benchmark::State& state) {
    const std::string text = "section:key:with:some:colons";
    std::vector<std::string> pieces;
    for ([[maybe_unused]] auto each : state) {
        STD_SplitA(text, ":", pieces);
        benchmark::DoNotOptimize(pieces.data());
    }
}
BENCHMARK(SplitAText);

void DecodeAnUrl(benchmark::State& state) {
    const std::string url = "a%20text%20with%20some%C3%A4%20escapes+and%2Fsigns";
    for ([[maybe_unused]] auto each : state)
        benchmark::DoNotOptimize(STD_UrlDecodingA(url));
}
BENCHMARK(DecodeAnUrl);

}  // namespace
