// The facade of a process in which no tool has ever told a size.

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <chrono>

#include "Module/Sync/Backup.h"

TEST(FacadeWithoutAnswer, GivesUpAfterHalfAMinuteWithoutUsingTheProcessor) {
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(CBackup::GetInstance()->GetBackupSize(nullptr, nullptr), 0);
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::seconds(30));
    rusage used{};
    getrusage(RUSAGE_SELF, &used);
    EXPECT_LT(used.ru_utime.tv_sec + used.ru_stime.tv_sec, 3);
}
