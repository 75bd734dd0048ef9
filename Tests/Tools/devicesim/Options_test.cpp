#include "Tools/devicesim/Options.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <vector>

#include "Host/SampleDevice/SampleDeviceFolder.h"

using namespace devicesim;
using testing::HasSubstr;

namespace {

std::optional<Simulator::Settings> Parse(std::vector<const char*> words, std::string& text) {
    words.insert(words.begin(), "devicesim");
    return ParseOptions(static_cast<int>(words.size()), words.data(), text);
}

std::string ErrorOf(const std::vector<const char*>& words) {
    std::string text;
    try {
        Parse(words, text);
    } catch (const UsageError& error) {
        return error.what();
    }
    return "no error";
}

}  // namespace

TEST(DevicesimOptions, AreReadFromTheCommandLine) {
    std::string text;
    const auto settings =
        Parse({"--socket", "/s", "--devices", "/d", "--fault", "locked", "--fault", "a/drop-after=2"}, text);
    ASSERT_TRUE(settings);
    EXPECT_EQ(settings->socket, "/s");
    EXPECT_EQ(settings->devices, "/d");
    EXPECT_TRUE(settings->faults.Has("x", FaultKind::kLocked));
    EXPECT_EQ(settings->faults.AnswersBeforeDrop("a"), 2);
}

TEST(DevicesimOptions, TakeTheFolderFromTheEnvironment) {
    std::string text;
    setenv(krutein::kSampleDevicesVariable, "/of/environment", 1);
    const auto settings = Parse({"--socket", "/s"}, text);
    unsetenv(krutein::kSampleDevicesVariable);
    ASSERT_TRUE(settings);
    EXPECT_EQ(settings->devices, "/of/environment");
}

TEST(DevicesimOptions, PrintTheFaultsInTheHelp) {
    std::string text;
    EXPECT_FALSE(Parse({"--help"}, text));
    EXPECT_THAT(text, HasSubstr("wrong-type=KEY"));
}

TEST(DevicesimOptions, RefuseWhatIsWrong) {
    EXPECT_THAT(ErrorOf({"--devices", "/d"}), HasSubstr("--socket"));
    EXPECT_THAT(ErrorOf({"--socket", "/s"}), HasSubstr("--devices"));
    EXPECT_THAT(ErrorOf({"--socket", "/s", "--devices", "/d", "--fault", "odd"}),
                HasSubstr("no fault 'odd'"));
    EXPECT_THAT(ErrorOf({"--socket", "/s", "--devices", "/d", "--odd"}), HasSubstr("--odd"));
}
