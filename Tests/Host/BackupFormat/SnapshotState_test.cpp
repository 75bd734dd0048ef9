#include "Host/BackupFormat/SnapshotState.h"

#include <gtest/gtest.h>

#include "Tests/support/BackupBuilder.h"

TEST(SnapshotState, OnlyFinishedIsFinished) {
    EXPECT_TRUE(krutein::SaysFinished(BackupBuilder::Status("finished")));
    for (const char* state : {"uploading", "new", "", "Finished", "finished "})
        EXPECT_FALSE(krutein::SaysFinished(BackupBuilder::Status(state))) << state;
    EXPECT_FALSE(krutein::SaysFinished(""));
    EXPECT_FALSE(krutein::SaysFinished("finished"));
}

TEST(SnapshotState, NoPrefixOfAStatusIsFinished) {
    const std::string status = BackupBuilder::Status("finished");
    for (std::size_t length = 0; length < status.size(); ++length)
        EXPECT_FALSE(krutein::SaysFinished(std::string_view(status).substr(0, length))) << length;
}
