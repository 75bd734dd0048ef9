#include "Tools/devicesim/Plist.h"

#include <gtest/gtest.h>

#include <utility>

using devicesim::Plist;

TEST(Plist, TellsWhatWasSet) {
    Plist list;
    list.Set("text", "t")
        .Set("number", std::uint64_t{7})
        .Set("flag", true)
        .SetData("data", std::string("\0x", 2));
    list.Set("inner", std::move(Plist().Set("key", "value")));
    const std::optional<Plist> read = Plist::Parse(list.ToXml());
    ASSERT_TRUE(read);
    EXPECT_EQ(read->Text("text"), "t");
    EXPECT_EQ(read->Number("number"), 7U);
    EXPECT_TRUE(read->Has("flag"));
    EXPECT_EQ(read->Data("data"), std::string("\0x", 2));
    ASSERT_TRUE(read->Member("inner"));
    EXPECT_EQ(read->Member("inner")->Text("key"), "value");
}

TEST(Plist, TellsNothingOfOtherTypesAndMissingMembers) {
    Plist list;
    list.Set("text", "t").Set("number", std::uint64_t{7});
    EXPECT_EQ(list.Text("number"), "");
    EXPECT_EQ(list.Data("text"), "");
    EXPECT_FALSE(list.Number("text"));
    EXPECT_FALSE(list.Has("other"));
    EXPECT_EQ(list.Text("other"), "");
    EXPECT_FALSE(list.Number("other"));
    EXPECT_FALSE(list.Member("other"));
}

TEST(Plist, HasNoMembersWhenItIsNoDictionary) {
    Plist text = Plist::OfText("t");
    text.Set("key", "value");
    EXPECT_TRUE(text.IsText());
    EXPECT_FALSE(text.Has("key"));
    EXPECT_FALSE(Plist::OfNumber(1).IsText());
}

TEST(Plist, IsNotParsedFromOtherBytes) {
    for (const char* bytes : {"", "x", "<", "<plist", "this is no property list"})
        EXPECT_FALSE(Plist::Parse(bytes)) << bytes;
}
