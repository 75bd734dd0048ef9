#include "Host/kruteinctl/Progress.h"

#include <gtest/gtest.h>

#include "Host/kruteinctl/TerminalPresenter.h"
#include "Host/kruteinctl/Text.h"

namespace {

using std::chrono::seconds;

class ProgressTest : public testing::Test {
 protected:
    ProgressState After(int time) const { return progress.At(start + seconds(time)); }

    Progress::Clock::time_point start = Progress::Clock::now();
    Progress progress{start};
};

}  // namespace

TEST_F(ProgressTest, APhaseHasNoPercent) {
    progress.Enter("starting");
    const ProgressState state = After(3);
    EXPECT_EQ(state.phase, "starting");
    EXPECT_FALSE(state.fraction);
    EXPECT_EQ(state.elapsed, seconds(3));
}

TEST_F(ProgressTest, ReportsGiveFractionAndTime) {
    progress.Report(25, 100, "IMG_0025.JPG");
    const ProgressState state = After(10);
    EXPECT_DOUBLE_EQ(*state.fraction, 0.25);
    EXPECT_EQ(state.done, 25U);
    EXPECT_EQ(state.total, 100U);
    EXPECT_EQ(state.current, "IMG_0025.JPG");
    EXPECT_EQ(*state.remaining, seconds(30));
}

TEST_F(ProgressTest, NeverRunsBackwards) {
    progress.Report(50, 100, "");
    progress.Report(20, 100, "");
    EXPECT_DOUBLE_EQ(*After(1).fraction, 0.5);
    EXPECT_EQ(After(1).done, 50U);
    progress.Report(60, 1000, "");
    EXPECT_DOUBLE_EQ(*After(1).fraction, 0.5) << "also when there turns out to be more to do";
    EXPECT_EQ(After(1).total, 1000U);
}

TEST_F(ProgressTest, NeverGoesBeyondTheEnd) {
    progress.Report(200, 100, "");
    EXPECT_DOUBLE_EQ(*After(1).fraction, 1.0);
    EXPECT_EQ(After(1).done, 100U);
}

TEST_F(ProgressTest, NumbersThatMeanNothingAreLeftOut) {
    progress.Report(static_cast<unsigned long long>(-1LL), 100, "first");
    EXPECT_FALSE(After(1).fraction);
    progress.Report(5, 0, "second");
    EXPECT_FALSE(After(1).fraction);
    progress.Report(5, static_cast<unsigned long long>(-7LL), "third");
    EXPECT_FALSE(After(1).fraction);
}

TEST_F(ProgressTest, NoEstimateBeforeThereIsAnythingToGoBy) {
    progress.Report(1, 1000, "");
    EXPECT_FALSE(After(10).remaining);
    progress.Report(500, 1000, "");
    EXPECT_FALSE(After(0).remaining);
    EXPECT_TRUE(After(2).remaining);
}

TEST_F(ProgressTest, NamesFromTheDeviceAreMadePrintable) {
    progress.Report(1, 2, "a\x1b[2J");
    EXPECT_EQ(After(1).current, "a?[2J");
}

TEST_F(ProgressTest, TheLineFitsEveryTerminal) {
    progress.Enter("backing up");
    progress.Report(910, 2013, "CameraRollDomain/Media/DCIM/100APPLE/IMG_0910 with a long name.JPG");
    for (std::size_t columns = 0; columns < 200; ++columns) {
        EXPECT_LE(Columns(ProgressLine(After(9), columns)), columns);
    }
    EXPECT_EQ(ProgressLine(After(9), 80),
              "[#######---------]  45%  910/2013 files  0:09, 0:11 left  CameraRoll…ng name.JPG");
    progress.Enter("finishing");
    EXPECT_EQ(ProgressLine(After(9), 80), "finishing … 0:09");
}
