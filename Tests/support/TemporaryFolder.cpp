#include "Tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <iterator>

TemporaryFolder::TemporaryFolder() {
    std::string name = (std::filesystem::temp_directory_path() / "krutein-test-XXXXXX").string();
    if (mkdtemp(name.data()) == nullptr) {
        ADD_FAILURE() << "no temporary folder " << name;
        std::abort();
    }
    m_path = std::filesystem::canonical(name);
}

TemporaryFolder::~TemporaryFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(m_path, ignored);
}

std::string TemporaryFolder::Write(const std::string& name, const std::string& content) const {
    const std::filesystem::path path = m_path / name;
    std::filesystem::create_directories(path.parent_path());
    std::ofstream(path, std::ios::binary) << content;
    return path.string();
}

std::string TemporaryFolder::Read(const std::string& name) const {
    return ReadWholeFile(Path(name));
}

std::string ReadWholeFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    EXPECT_TRUE(file.good()) << "cannot read " << path;
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}
