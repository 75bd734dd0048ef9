#include "Host/kruteinctl/InfoCommand.h"

#include <gtest/gtest.h>

namespace {

DeviceFacts Facts() {
    return {"the-udid", "Ann's phone", "iPhone14,5", "17.4.1", "S1", 100'000'000'000, 25'000'000'000};
}

}  // namespace

TEST(FactsText, TellsEverything) {
    EXPECT_EQ(FactsText(Facts()),
              "Ann's phone\n"
              "  Model    iPhone 13 (iPhone14,5)\n"
              "  System   17.4.1\n"
              "  Serial   S1\n"
              "  UDID     the-udid\n"
              "  Storage  [##################------]  75.0 GB of 100.0 GB used, 25.0 GB free\n");
}

TEST(FactsText, TellsWhatIsUnknown) {
    DeviceFacts facts;
    facts.udid = "the-udid";
    EXPECT_EQ(FactsText(facts),
              "unknown\n"
              "  Model    unknown\n"
              "  System   unknown\n"
              "  Serial   unknown\n"
              "  UDID     the-udid\n"
              "  Storage  unknown\n");
}

TEST(FactsText, DoesNotLetADeviceCommandTheTerminal) {
    DeviceFacts facts = Facts();
    facts.name = "\x1b[2J";
    EXPECT_EQ(FactsText(facts).substr(0, 5), "?[2J\n");
}

TEST(DeviceFacts, KnowTheStorageOnlyIfItCanBe) {
    DeviceFacts facts = Facts();
    EXPECT_TRUE(facts.KnowsStorage());
    EXPECT_EQ(facts.UsedBytes(), 75'000'000'000U);
    facts.availableBytes = facts.totalBytes;
    EXPECT_TRUE(facts.KnowsStorage());
    EXPECT_NE(FactsText(facts).find("[------------------------]"), std::string::npos);
    facts.availableBytes = facts.totalBytes + 1;
    EXPECT_FALSE(facts.KnowsStorage());
    facts = DeviceFacts();
    EXPECT_FALSE(facts.KnowsStorage());
}
