// Runs a fuzz target over files: the main of the targets in a build without libFuzzer.
// Usage: <target> <file or folder> ...

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "Tests/fuzz/Fuzz.h"

namespace fs = std::filesystem;

namespace {

std::vector<fs::path> FilesOf(const fs::path& path) {
    if (!fs::is_directory(path)) return {path};
    std::vector<fs::path> files;
    for (const fs::directory_entry& entry : fs::directory_iterator(path))
        files.push_back(entry.path());
    return files;
}

void Replay(const fs::path& path) {
    std::fprintf(stderr, "%s\n", path.c_str());  // the last one is the culprit when the program dies
    std::ifstream file(path, std::ios::binary);
    Require(file.good(), "the input can be read");
    const std::string bytes((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
}

}  // namespace

int main(int argc, char** argv) {
    int replayed = 0;
    for (int i = 1; i < argc; ++i) {
        for (const fs::path& file : FilesOf(argv[i])) {
            Replay(file);
            ++replayed;
        }
    }
    std::fprintf(stderr, "%d inputs\n", replayed);
    return replayed > 0 ? 0 : 1;  // an empty corpus shows nothing
}
