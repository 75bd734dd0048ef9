// The project as a part of another build.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "Tests/support/ChildProcess.h"
#include "Tests/support/TemporaryFolder.h"

using testing::HasSubstr;

TEST(Subproject, BringsTheLibraryAndNothingElse) {
    const TemporaryFolder folder;
    const std::string build = folder.Path("build");
    const Finished configured = RunToEnd(
        Command({CMAKE_PROGRAM, "-S", SUBPROJECT_HOST, "-B", build, "-G", CMAKE_GENERATOR_NAME,
                 std::string("-DKRUTEIN=") + SOURCES, std::string("-DCMAKE_CXX_COMPILER=") + COMPILER}));
    ASSERT_EQ(configured.code, 0) << configured.errors;

    const Finished tests = RunToEnd(Command({CTEST_PROGRAM, "--test-dir", build, "-N"}));
    EXPECT_THAT(tests.output, HasSubstr("Total Tests: 0"));

    const Finished installed =
        RunToEnd(Command({CMAKE_PROGRAM, "--install", build, "--prefix", folder.Path("prefix")}));
    EXPECT_EQ(installed.code, 0) << installed.errors;
    EXPECT_FALSE(std::filesystem::exists(folder.Path("prefix")));

    const Finished targets = RunToEnd(Command({CMAKE_PROGRAM, "--build", build, "--target", "help"}));
    EXPECT_THAT(targets.output, HasSubstr("krutein_common"));
    EXPECT_THAT(targets.output, testing::Not(HasSubstr("kruteinctl")));
}
