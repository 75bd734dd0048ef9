// Opening and saving a Manifest.mbdb.

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <vector>

#include "Benchmarks/compare.d/Comparisons.h"
#include "Benchmarks/compare.d/Data.h"
#include "Module/BackupLib/mbdb/mbdb.h"

namespace {

std::string CataloguePath() {
    return DataFolder() + "/Manifest.mbdb";
}

std::vector<char> ReadWhole(const std::string& path) {
    FILE* const file = std::fopen(path.c_str(), "rb");
    if (file == nullptr) std::exit(1);
    if (std::fseek(file, 0, SEEK_END) != 0) std::exit(1);
    std::vector<char> content(static_cast<std::size_t>(std::ftell(file)));
    std::rewind(file);
    if (std::fread(content.data(), 1, content.size(), file) != content.size()) std::exit(1);
    std::fclose(file);
    return content;
}

void* CopyOf(const void* from, std::size_t bytes) {
    void* const copy = std::malloc(bytes);
    if (copy == nullptr) std::exit(1);
    std::memcpy(copy, from, bytes);
    return copy;
}

/// The sizes of the allocations that opening makes for a record, taken from a catalogue that has been opened.
struct Sizes {
    std::size_t domain = 0;
    std::size_t path = 0;
};

/// The least that any reader has to do: read the file, copy it, and make the same allocations and copies,
/// without looking at what is in it. Freed with the process, as on the other side.
void Floor(const std::string& path, const std::vector<Sizes>& sizes) {
    const std::vector<char> image = ReadWhole(path);
    std::vector<void*> kept = {CopyOf(image.data(), image.size())};
    const char* from = image.data();
    for (const Sizes& each : sizes) {
        void* const record = std::calloc(1, sizeof(mbdb_record_t));
        kept.push_back(record);
        kept.push_back(CopyOf(from, each.domain));
        kept.push_back(CopyOf(from, each.path));
        kept.push_back(CopyOf(from, 20));
    }
    if (kept.size() != 1 + 4 * sizes.size()) std::exit(1);
}

mbdb_t* Opened() {
    mbdb_t* const mbdb = mbdb_open(CataloguePath().c_str());
    if (mbdb == nullptr) std::exit(1);
    return mbdb;
}

Comparison Open(int records) {
    Comparison comparison;
    comparison.name = "open a catalogue of " + std::to_string(records) + " records";
    comparison.against = "read, copy, same allocations";
    comparison.goal = 1.25;
    comparison.items = records;
    comparison.prepare = [=] { MakeMbdb(CataloguePath(), records); };
    comparison.ours = [=] {
        return Timed([&] {
            if (Opened()->records.size() != static_cast<std::size_t>(records)) std::exit(1);
        });
    };
    comparison.theirs = [=] {
        std::vector<Sizes> sizes;
        for (int n = 0; n < records; ++n) {
            const MadeFile file = FileNumber(n);
            sizes.push_back({file.domain.size() + 1, file.path.size() + 1});
        }
        return Timed([&] { Floor(CataloguePath(), sizes); });
    };
    return comparison;
}

Comparison Save(int records) {
    const std::string target = DataFolder() + "/saved";
    Comparison comparison;
    comparison.name = "save it";
    comparison.against = "one buffered write";
    comparison.goal = 1.3;
    comparison.items = records;
    comparison.prepare = [=] { MakeMbdb(CataloguePath(), records); };
    comparison.prepareRound = [=] { std::filesystem::remove(target); };
    comparison.ours = [=] {
        mbdb_t* const mbdb = Opened();
        std::filesystem::remove(target);
        return Timed([&] {
            if (!mbdb_save(mbdb, target.c_str())) std::exit(1);
        });
    };
    comparison.theirs = [=] {
        const std::vector<char> image = ReadWhole(CataloguePath());
        std::filesystem::remove(target);
        return Timed([&] {
            FILE* const file = std::fopen(target.c_str(), "wb");
            if (file == nullptr || std::fwrite(image.data(), 1, image.size(), file) != image.size())
                std::exit(1);
            std::fclose(file);
        });
    };
    return comparison;
}

}  // namespace

std::vector<Comparison> CatalogueComparisons(const Scale& scale) {
    return {Open(scale.records), Save(scale.records)};
}
