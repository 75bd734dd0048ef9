// What README and Docs say is so.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fmt/format.h>
#include <filesystem>

#include "Host/kruteinctl/ExitCode.h"
#include "Tests/support/ChildProcess.h"
#include "Tests/support/ToolScript.h"

using testing::HasSubstr;

namespace fs = std::filesystem;

TEST(Readme, ItsHostBacksUp) {
    const TemporaryFolder folder;
    const fs::path contents = folder.Path("Host.app/Contents");
    fs::create_directories(contents / "MacOS");
    fs::create_directories(contents / "Frameworks");
    fs::copy_file(README_HOST_PROGRAM, contents / "MacOS/host");
    fs::create_symlink(SCRIPTED_TOOL_PROGRAM, contents / "Frameworks/HandsetArchiver");
    ToolScript tool;
    tool.MakeBackup().Progress(1, 2, "a").Progress(2, 2, "b").ExitMessage(0);
    Command command({(contents / "MacOS/host").string(), "the-device", folder.Path() + "/"});
    command.environment = {{"KRUTEIN_LOG_DIR", folder.Path("logs")}};
    const Finished host = RunToEnd(command);
    EXPECT_EQ(host.code, 0);
    EXPECT_THAT(host.output, HasSubstr("1 of 2 files\n2 of 2 files\n"));
    EXPECT_THAT(host.output, HasSubstr("finished: " + folder.Path("the-device") + "\n"));
    EXPECT_TRUE(fs::exists(folder.Path("the-device/Manifest.db")));
}

TEST(Docs, ScriptingListsEveryExitCode) {
    const std::string text = ReadWholeFile(DOCS_FOLDER "/scripting.md");
    std::string table = "| Code | Cause | Meaning |\n|---|---|---|\n";
    for (const ExitCodeRow& row : ExitCodeTable()) {
        table += fmt::format("| {} | {} | {} |\n", static_cast<int>(row.code), row.cause, row.meaning);
    }
    EXPECT_THAT(text, HasSubstr(table + "\n")) << "neither more nor fewer";
}
