// Hosts of somebody else, in a folder of their own, are built against what was installed.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <vector>

#include "Common/Version.h"
#include "Tests/support/ChildProcess.h"
#include "Tests/support/TemporaryFolder.h"

using testing::HasSubstr;

namespace fs = std::filesystem;

namespace {

/// What linked_host says.
constexpr char kGreeting[] = KRUTEIN_VERSION " 3d0d7e5fb2ce288813306e4d4636395e047a3d28\n";

class OutsideHost : public testing::Test {
 protected:
    OutsideHost() { fs::copy(OUTSIDE_HOSTS, folder.Path("host")); }

    /// Runs a line of the shell in the host's folder, as its developer would.
    Finished Shell(const std::string& line) const {
        Command command({"/bin/sh", "-ec", line});
        command.workingFolder = folder.Path("host");
        command.environment = {{"PKG_CONFIG_PATH", INSTALLED_PKGCONFIG},
                               {"KRUTEIN_LOG_DIR", folder.Path("logs")}};
        return RunToEnd(command);
    }

    void Succeeds(const std::string& line, const std::string& output) const {
        const Finished shell = Shell(line);
        EXPECT_EQ(shell.code, 0) << line << "\n" << shell.output << shell.errors;
        EXPECT_THAT(shell.output, HasSubstr(output)) << line << "\n" << shell.errors;
    }

    TemporaryFolder folder;
};

const std::string kCompile = COMPILER " " COMPILER_FLAGS " -std=c++17 -Wall -Wextra -Werror ";

}  // namespace

TEST_F(OutsideHost, FindsThePackageWithCMake) {
    Succeeds("'" CMAKE_PROGRAM "' -S . -B build -G '" CMAKE_GENERATOR_NAME "' -DCMAKE_PREFIX_PATH='" INSTALLED
             "' -DCMAKE_CXX_COMPILER='" COMPILER "' -DCMAKE_CXX_FLAGS='" COMPILER_FLAGS "'",
             "");
    Succeeds("'" CMAKE_PROGRAM "' --build build", "");
    Succeeds("build/linked_host", kGreeting);
}

TEST_F(OutsideHost, IsRefusedAVersionThatDoesNotFit) {
    folder.Write("host/CMakeLists.txt",
                 "cmake_minimum_required(VERSION 3.20)\nproject(host NONE)\n"
                 "find_package(krutein 2.0 CONFIG REQUIRED)\n");
    const Finished configured = Shell("'" CMAKE_PROGRAM "' -S . -B build -G '" CMAKE_GENERATOR_NAME
                                      "' -DCMAKE_PREFIX_PATH='" INSTALLED "'");
    EXPECT_NE(configured.code, 0);
    EXPECT_THAT(configured.errors, HasSubstr("version: " KRUTEIN_VERSION));
}

TEST_F(OutsideHost, LinksWithPkgConfig) {
    Succeeds("'" PKG_CONFIG_PROGRAM "' --modversion krutein", KRUTEIN_VERSION "\n");
    Succeeds(kCompile + "$('" PKG_CONFIG_PROGRAM
                        "' --cflags krutein) linked_host.cpp -o linked_host "
                        "$('" PKG_CONFIG_PROGRAM "' --libs krutein) -Wl,-rpath,'" INSTALLED_LIB "'",
             "");
    Succeeds("./linked_host", kGreeting);
}

TEST_F(OutsideHost, LoadsTheLibraryWhenItRuns) {
    Succeeds(kCompile + "$('" PKG_CONFIG_PROGRAM "' --cflags krutein) loading_host.cpp -o loading_host -ldl",
             "");
    Succeeds("./loading_host \"$('" PKG_CONFIG_PROGRAM "' --variable=libdir krutein)/" LIBRARY_NAME "\"",
             "found\n");
}

/// Forwards and backwards, so that a header that needs another one before it is found out.
TEST_F(OutsideHost, IncludesEveryHeaderInAnyOrder) {
    std::vector<std::string> lines;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(INSTALLED_HEADERS)) {
        if (!entry.is_regular_file()) continue;
        lines.push_back("#include \"" + fs::relative(entry.path(), INSTALLED_HEADERS).string() + "\"\n");
    }
    std::sort(lines.begin(), lines.end());
    ASSERT_GE(lines.size(), 20U);
    for (const char* name : {"forwards", "backwards"}) {
        std::string text;
        for (const std::string& line : lines)
            text += line;
        folder.Write(std::string("host/") + name + ".cpp", text);
        Succeeds(kCompile + "-fsyntax-only $('" PKG_CONFIG_PROGRAM "' --cflags krutein) " + name + ".cpp",
                 "");
        std::reverse(lines.begin(), lines.end());
    }
}
