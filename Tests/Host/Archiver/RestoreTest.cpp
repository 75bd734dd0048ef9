#include "Tests/Host/Archiver/RestoreTest.h"

#include <gmock/gmock.h>

#include "Host/ToolCodes.h"

void RestoreTest::SetUp() {
    nlohmann::json description = Description();
    description["contents"] = {{"photos", {{"count", 5}, {"bytesEach", 300'000}}}};
    Connect(description);
    ASSERT_TRUE(EndedWith(BackUp(), kToolDone));
}

void RestoreTest::ExpectDamaged(const std::string& error) const {
    const ToolRun run = Run(RestoreCommand());
    EXPECT_TRUE(EndedWith(run, kToolBackupDamaged));
    EXPECT_THAT(run.errors, testing::HasSubstr(error));
}
