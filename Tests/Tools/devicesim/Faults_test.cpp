#include "Tools/devicesim/Faults.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace devicesim;
using testing::HasSubstr;

namespace {

Faults With(const std::string& text) {
    Faults faults;
    faults.Add(text);
    return faults;
}

std::string ErrorOf(const std::string& text) {
    try {
        With(text);
    } catch (const FaultError& error) {
        return error.what();
    }
    return "no error";
}

}  // namespace

TEST(Faults, AreForEveryDeviceOrForOne) {
    const Faults all = With("locked");
    EXPECT_TRUE(all.Has("a", FaultKind::kLocked));
    EXPECT_FALSE(all.Has("a", FaultKind::kUnpaired));
    const Faults one = With("abc-1/locked");
    EXPECT_TRUE(one.Has("abc-1", FaultKind::kLocked));
    EXPECT_FALSE(one.Has("abc-2", FaultKind::kLocked));
    EXPECT_FALSE(one.Has("", FaultKind::kLocked));
}

TEST(Faults, AreFoundAtTheirKey) {
    const Faults faults = With("refuse=DeviceName");
    EXPECT_TRUE(faults.HasAt("a", FaultKind::kRefuse, "DeviceName"));
    EXPECT_FALSE(faults.HasAt("a", FaultKind::kRefuse, "ProductType"));
    EXPECT_FALSE(faults.HasAt("a", FaultKind::kMissing, "DeviceName"));
    EXPECT_FALSE(faults.Has("a", FaultKind::kRefuse));
}

TEST(Faults, AreFoundAtTheirPlace) {
    const Faults request = With("silent=GetValue");
    EXPECT_TRUE(request.OnAnswer("a", {"GetValue", "DeviceName"}));
    EXPECT_FALSE(request.OnAnswer("a", {"QueryType", ""}));
    const Faults key = With("abc-1/late=GetValue.DeviceName:250");
    EXPECT_FALSE(key.OnAnswer("abc-1", {"GetValue", "ProductType"}));
    EXPECT_FALSE(key.OnAnswer("other", {"GetValue", "DeviceName"}));
    const std::optional<Fault> late = key.OnAnswer("abc-1", {"GetValue", "DeviceName"});
    ASSERT_TRUE(late);
    EXPECT_EQ(late->kind, FaultKind::kLate);
    EXPECT_EQ(late->delay, std::chrono::milliseconds(250));
}

TEST(Faults, CountAnswers) {
    EXPECT_EQ(With("drop-after=3").AnswersBeforeDrop("a"), 3);
    EXPECT_EQ(With("drop-after=0").AnswersBeforeDrop("a"), 0);
    EXPECT_FALSE(With("locked").AnswersBeforeDrop("a"));
}

TEST(Faults, RefuseWhatTheyDoNotKnow) {
    EXPECT_THAT(ErrorOf("broken"), HasSubstr("there is no fault 'broken'"));
    EXPECT_THAT(ErrorOf(""), HasSubstr("there is no fault ''"));
    EXPECT_THAT(ErrorOf("abc-1/"), HasSubstr("there is no fault ''"));
    EXPECT_THAT(ErrorOf("refuse"), HasSubstr("an argument is missing"));
    EXPECT_THAT(ErrorOf("refuse="), HasSubstr("an argument is missing"));
    EXPECT_THAT(ErrorOf("locked=yes"), HasSubstr("takes no argument"));
    for (const char* number : {"x", "-1", "1.5", "600001", "99999999999999999999"})
        EXPECT_THAT(ErrorOf(std::string("drop-after=") + number), HasSubstr("is no number")) << number;
    EXPECT_THAT(ErrorOf("late=GetValue"), HasSubstr("'' is no number"));
}

TEST(Faults, AreAllInTheHelp) {
    for (const char* name : {"refuse=KEY", "missing=KEY", "wrong-type=KEY", "late=REQUEST[.KEY]:MS",
                             "silent=REQUEST[.KEY]", "half=", "garbage=", "huge=", "detach=", "drop-after=N",
                             "unpaired", "trust-dialog", "no-trust", "forgotten", "locked", "tls-silence"})
        EXPECT_THAT(Faults::Help(), HasSubstr(name));
}
