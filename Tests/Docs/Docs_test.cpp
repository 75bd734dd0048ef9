// What README and Docs say is so.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fmt/format.h>
#include <filesystem>
#include <regex>
#include <set>
#include <sstream>
#include <vector>

#include "Host/kruteinctl/ExitCode.h"
#include "Tests/support/ChildProcess.h"
#include "Tests/support/ToolScript.h"

using testing::HasSubstr;

namespace fs = std::filesystem;

namespace {

/// "Suite.Name" of every test in the sources.
std::set<std::string> AllTests() {
    static const std::regex test(R"(\nTEST(?:_F|_P)?\((\w+),\s*(\w+)\))");
    std::set<std::string> tests;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(TESTS_FOLDER)) {
        if (entry.path().extension() != ".cpp") continue;
        const std::string text = ReadWholeFile(entry.path().string());
        for (std::sregex_iterator at(text.begin(), text.end(), test), end; at != end; ++at)
            tests.insert((*at)[1].str() + "." + (*at)[2].str());
    }
    return tests;
}

/// The tests that the last cell of a table's row names.
std::vector<std::string> TestsOf(const std::string& row) {
    static const std::regex name("`(\\w+\\.\\w+)`");
    const std::string cell = row.substr(row.rfind('|', row.size() - 2));
    std::vector<std::string> tests;
    for (std::sregex_iterator at(cell.begin(), cell.end(), name), end; at != end; ++at)
        tests.push_back((*at)[1]);
    return tests;
}

/// Checks the tables whose heading ends with "| Test |". \return the number of their rows.
int CheckNamedTests(const std::string& document) {
    const std::set<std::string> all = AllTests();
    std::istringstream lines(ReadWholeFile(DOCS_FOLDER "/" + document));
    bool inTable = false;
    int rows = 0;
    for (std::string line; std::getline(lines, line);) {
        const bool isRow = !line.empty() && line.front() == '|';
        if (isRow && inTable && line.rfind("|---", 0) != 0) {
            const std::vector<std::string> tests = TestsOf(line);
            EXPECT_FALSE(tests.empty()) << "no test is named: " << line;
            for (const std::string& test : tests)
                EXPECT_EQ(all.count(test), 1U) << test << " is no test: " << line;
            ++rows;
        }
        inTable = isRow && (inTable || line.find("| Test |") != std::string::npos);
    }
    return rows;
}

}  // namespace

TEST(Docs, FaultsNamesTestsThatExist) {
    EXPECT_GE(CheckNamedTests("faults.md"), 45);
}

TEST(Docs, SecurityNamesTestsThatExist) {
    EXPECT_GE(CheckNamedTests("security.md"), 20);
}

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

TEST(Docs, EveryLinkLeadsSomewhere) {
    static const std::regex link(R"(\[[^\]]+\]\(([^)#:]+)(#[^)]*)?\))");
    const fs::path docs = DOCS_FOLDER;
    std::vector<fs::path> pages = {docs / "../README.md", docs / "../CONTRIBUTING.md",
                                   docs / "../CHANGELOG.md"};
    for (const fs::directory_entry& entry : fs::directory_iterator(docs))
        pages.push_back(entry.path());
    int links = 0;
    for (const fs::path& page : pages) {
        const std::string text = ReadWholeFile(page.string());
        for (std::sregex_iterator at(text.begin(), text.end(), link), end; at != end; ++at, ++links)
            EXPECT_TRUE(fs::exists(page.parent_path() / (*at)[1].str())) << page << ": " << (*at)[1];
    }
    EXPECT_GE(links, 20);
}

TEST(Docs, EveryScriptThatIsNamedExists) {
    static const std::regex script(R"(scripts/([a-z]+))");
    const fs::path root = fs::path(DOCS_FOLDER) / "..";
    for (const char* const page :
         {"README.md", "CONTRIBUTING.md", "Docs/testing.md", "Docs/macos.md", "Docs/hosting.md"}) {
        const std::string text = ReadWholeFile((root / page).string());
        for (std::sregex_iterator at(text.begin(), text.end(), script), end; at != end; ++at)
            EXPECT_TRUE(fs::exists(root / (*at)[0].str())) << page << ": " << (*at)[0];
    }
}

TEST(Docs, ScriptingListsEveryExitCode) {
    const std::string text = ReadWholeFile(DOCS_FOLDER "/scripting.md");
    std::string table = "| Code | Cause | Meaning |\n|---|---|---|\n";
    for (const ExitCodeRow& row : ExitCodeTable()) {
        table += fmt::format("| {} | {} | {} |\n", static_cast<int>(row.code), row.cause, row.meaning);
    }
    EXPECT_THAT(text, HasSubstr(table + "\n")) << "neither more nor fewer";
}
