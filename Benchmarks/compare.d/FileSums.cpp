// The SHA-1 of a large file.

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>

#include "Benchmarks/compare.d/Comparisons.h"
#include "Benchmarks/compare.d/Data.h"
#include "Common/std/std_sha1.h"

namespace {

constexpr std::size_t kMiB = std::size_t{1024} * 1024;

void MakeFile(const std::string& path, int mebibytes) {
    std::ofstream out(path, std::ios::binary);
    std::string piece(kMiB, '\0');
    std::mt19937 random(1);
    for (char& c : piece)
        c = static_cast<char>(random());
    for (int n = 0; n < mebibytes; ++n)
        out << piece;
}

}  // namespace

std::vector<Comparison> FileSumComparisons(const Scale& scale) {
    const std::string path = DataFolder() + "/large";
    Comparison comparison;
    comparison.name = "SHA-1 of a file of " + std::to_string(scale.fileMiB) + " MiB";
    comparison.against = "openssl sha1";
    comparison.goal = 1.1;
    comparison.items = scale.fileMiB;
    comparison.prepare = [=] { MakeFile(path, scale.fileMiB); };
    comparison.finish = [=] { std::filesystem::remove(path); };
    comparison.ours = [=] {
        return Timed([&] {
            void* digest = nullptr;
            int length = 0;
            if (!STD_FILE_CalcFileSha1A(path, digest, length)) std::exit(1);
            delete[] static_cast<unsigned char*>(digest);
        });
    };
    comparison.theirs = [=] { return RunProgram({"openssl", "sha1", path}); };
    return {comparison};
}
