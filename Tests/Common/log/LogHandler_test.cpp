#include "Common/log/LogHandler.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <sstream>
#include <thread>
#include <vector>

#include "Module/Sync/SyncFactory.h"
#include "Tests/support/TemporaryFolder.h"

using testing::HasSubstr;
using testing::Not;

namespace {

/// Sets a variable for the length of a test; null unsets it.
class Variable {
 public:
    Variable(const char* name, const char* value) : m_name(name) {
        const char* before = std::getenv(name);
        if (before != nullptr) m_before = before;
        m_had = before != nullptr;
        Set(value);
    }
    ~Variable() { Set(m_had ? m_before.c_str() : nullptr); }
    Variable(const Variable&) = delete;
    Variable& operator=(const Variable&) = delete;

 private:
    void Set(const char* value) const {
        if (value == nullptr) {
            unsetenv(m_name);
        } else {
            setenv(m_name, value, 1);
        }
    }

    const char* m_name;
    std::string m_before;
    bool m_had = false;
};

int Log(const char* text) {
    return LogHandlerA("Function", "Module/Some.cpp", 12, 1, "%s", text);
}

}  // namespace

TEST(Log, NamesTheLevelOfEachLine) {
    const TemporaryFolder folder;
    const Variable variable("KRUTEIN_LOG_DIR", folder.Path().c_str());
    InitLogA("Some.log", nullptr);
    for (const int level : {-1, 0, 1, 2, 3, 99})
        LogHandlerA("F", "S.cpp", 1, level, "level %d.", level);
    const std::string text = folder.Read("Some.log");
    for (const char* const line :
         {"krutein info S.cpp:1 F: level 1.", "krutein warning S.cpp:1 F: level 2.",
          "krutein error S.cpp:1 F: level 3.", "krutein error S.cpp:1 F: level 99."}) {
        EXPECT_THAT(text, HasSubstr(line));
    }
}

TEST(Log, WritesToTheNamedFileInItsFolder) {
    const TemporaryFolder folder;
    const Variable variable("KRUTEIN_LOG_DIR", folder.Path("logs").c_str());
    InitLogA("Some.log", nullptr);
    EXPECT_EQ(LogHandlerA("Function", "Module/Some.cpp", 12, 1, "%s=%d\n", "a", 7), 0);
    EXPECT_THAT(folder.Read("logs/Some.log"), HasSubstr("krutein info Module/Some.cpp:12 Function: a=7\n"));
    EXPECT_THAT(folder.Read("logs/Some.log"), Not(HasSubstr("\n\n"))) << "each call is one line";
}

TEST(Log, FallsBackToTheStateFolderAndTheHomeFolder) {
    const TemporaryFolder folder;
    const Variable none("KRUTEIN_LOG_DIR", nullptr);
    const Variable home("HOME", folder.Path("home").c_str());
    {
        const Variable state("XDG_STATE_HOME", folder.Path("state").c_str());
        InitLogA("A.log", nullptr);
        Log("to the state folder");
        EXPECT_THAT(folder.Read("state/krutein/A.log"), HasSubstr("to the state folder"));
    }
    const Variable noState("XDG_STATE_HOME", nullptr);
    InitLogA("A.log", nullptr);
    Log("to the home folder");
    EXPECT_THAT(folder.Read("home/.local/state/krutein/A.log"), HasSubstr("to the home folder"));
}

TEST(Log, CanBeOpenedAnyNumberOfTimes) {
    const TemporaryFolder folder;
    const Variable variable("KRUTEIN_LOG_DIR", folder.Path().c_str());
    for (int i = 0; i < 100; ++i) {
        InitLogA("Same.log", "host");
        Log("line");
    }
    std::istringstream lines(folder.Read("Same.log"));
    int count = 0;
    for (std::string line; std::getline(lines, line);)
        ++count;
    EXPECT_EQ(count, 100);
}

TEST(Log, GoesOverToAnotherFile) {
    const TemporaryFolder folder;
    const Variable variable("KRUTEIN_LOG_DIR", folder.Path().c_str());
    InitLogA("First.log", nullptr);
    Log("one");
    InitLogA("Second.log", nullptr);
    Log("two");
    EXPECT_THAT(folder.Read("First.log"), Not(HasSubstr("two")));
    EXPECT_THAT(folder.Read("Second.log"), HasSubstr("two"));
}

TEST(Log, NeverFailsItsCaller) {
    const TemporaryFolder folder;
    const std::string file = folder.Write("file");
    const Variable variable("KRUTEIN_LOG_DIR", (file + "/below/a/file").c_str());
    InitLogA("None.log", nullptr);
    InitLogA(nullptr, nullptr);
    InitLogA("", nullptr);
    Log("lost or in an earlier log");
    EXPECT_EQ(LogHandlerA(nullptr, nullptr, 0, -5, nullptr), -1);
    LogHandlerA(nullptr, nullptr, 0, -5, "%s", "no names");
}

TEST(Log, DropsLinesWhileThereIsNoPlaceForThem) {
    const Variable none("KRUTEIN_LOG_DIR", nullptr);
    const Variable noState("XDG_STATE_HOME", nullptr);
    const Variable noHome("HOME", nullptr);
    InitLogA("Nowhere.log", nullptr);
    EXPECT_EQ(Log("dropped"), -1);
}

TEST(Log, TakesLongLinesWhole) {
    const TemporaryFolder folder;
    const Variable variable("KRUTEIN_LOG_DIR", folder.Path().c_str());
    InitLogA("Long.log", nullptr);
    const std::string text(100000, 'x');
    Log(text.c_str());
    EXPECT_THAT(folder.Read("Long.log"), HasSubstr(text));
}

TEST(Log, TakesLinesFromManyThreads) {
    const TemporaryFolder folder;
    const Variable variable("KRUTEIN_LOG_DIR", folder.Path().c_str());
    std::vector<std::thread> threads;
    threads.reserve(8);
    for (int i = 0; i < 8; ++i) {
        threads.emplace_back([] {
            for (int line = 0; line < 100; ++line) {
                InitLogA("Many.log", nullptr);
                Log("a whole line");
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    std::istringstream lines(folder.Read("Many.log"));
    int count = 0;
    for (std::string line; std::getline(lines, line); ++count)
        EXPECT_THAT(line, HasSubstr(": a whole line"));
    EXPECT_EQ(count, 800);
}

TEST(Log, IsOpenedByTheFactory) {
    const TemporaryFolder folder;
    const Variable variable("KRUTEIN_LOG_DIR", folder.Path().c_str());
    ASSERT_NE(GetSyncFactory(), nullptr);
    Log("line");
    EXPECT_THAT(folder.Read("Sync.log"), HasSubstr("line"));
}
