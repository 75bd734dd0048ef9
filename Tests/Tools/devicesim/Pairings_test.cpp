#include "Tools/devicesim/Pairings.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Tools/devicesim/Plist.h"

using namespace devicesim;

TEST(Pairings, BeginWithoutAny) {
    const Pairings pairings;
    EXPECT_EQ(pairings.Record("a"), "");
    EXPECT_FALSE(pairings.Trusts("a", "host"));
    EXPECT_FALSE(pairings.SystemBuid().empty());
}

TEST(Pairings, OfBeforeAreTrusted) {
    Pairings pairings;
    pairings.PairAsBefore("a");
    const std::optional<Plist> record = Plist::Parse(pairings.Record("a"));
    ASSERT_TRUE(record);
    EXPECT_EQ(record->Text("SystemBUID"), pairings.SystemBuid());
    EXPECT_TRUE(pairings.Trusts("a", record->Text("HostID")));
    EXPECT_FALSE(pairings.Trusts("b", record->Text("HostID")));
    EXPECT_FALSE(pairings.Trusts("a", ""));
    const std::string first = pairings.Record("a");
    pairings.PairAsBefore("a");
    EXPECT_EQ(pairings.Record("a"), first);
}

TEST(Pairings, CanBeMadeAndUndone) {
    Pairings pairings;
    pairings.SaveRecord("a", "record");
    pairings.Trust("a", "host");
    EXPECT_EQ(pairings.Record("a"), "record");
    EXPECT_TRUE(pairings.Trusts("a", "host"));
    pairings.RemoveRecord("a");
    pairings.Distrust("a", "host");
    EXPECT_EQ(pairings.Record("a"), "");
    EXPECT_FALSE(pairings.Trusts("a", "host"));
}

TEST(NewUuid, HasTheUsualFormAndIsNew) {
    const std::string form = "^[0-9A-F]{8}-[0-9A-F]{4}-4[0-9A-F]{3}-[89AB][0-9A-F]{3}-[0-9A-F]{12}$";
    EXPECT_THAT(NewUuid(), testing::ContainsRegex(form));
    EXPECT_NE(NewUuid(), NewUuid());
}
