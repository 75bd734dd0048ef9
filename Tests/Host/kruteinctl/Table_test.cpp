#include "Host/kruteinctl/Table.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using testing::ElementsAre;

TEST(Table, ColumnsAreAsWideAsTheirWidestCell) {
    Table table({"A", "Name", "Last"});
    table.Add({"long one", "b", "c"});
    table.Add({"d", "e", "not padded"});
    EXPECT_THAT(table.Rows(), ElementsAre("A         Name  Last",  //
                                          "long one  b     c",     //
                                          "d         e     not padded"));
}

TEST(Table, WidthIsCountedInColumnsOfATerminal) {
    Table table({"Device", "X"});
    table.Add({"Ä 📱", "1"});
    table.Add({"手机手机", "2"});
    EXPECT_THAT(table.Rows(), ElementsAre("Device    X",  //
                                          "Ä 📱      1",   //
                                          "手机手机  2"));
}

TEST(Table, WhatATerminalCouldTakeForCommandsIsReplaced) {
    Table table({"A"});
    table.Add({"\x1b[2Jx\ny"});
    EXPECT_THAT(table.Rows(), ElementsAre("A", "?[2Jx?y"));
}

TEST(Table, ThatIsTooWideForATerminalHasItsLastCellsBelow) {
    Table table({"Device", "State", "Backup"});
    table.Add({"A phone", "valid", "/a/path/that/stays/whole"});
    const std::string whole = "A phone  valid  /a/path/that/stays/whole";
    EXPECT_THAT(table.Rows({false, whole.size()}), ElementsAre("Device   State  Backup", whole));
    EXPECT_THAT(table.Rows({false, whole.size() - 1}),
                ElementsAre("Device   State\n  Backup", "A phone  valid\n  /a/path/that/stays/whole"));
}

TEST(Table, ThatIsStillTooWideHasShorterNames) {
    Table table({"Device", "State", "Backup"});
    table.Add({"手机手机手机手机手机", "valid", "/path"});
    const std::vector<std::string> rows = table.Rows({false, 20});
    ASSERT_EQ(rows.size(), 2U);
    EXPECT_EQ(rows[1], "手机手…机手机  valid\n  /path");
}

TEST(Table, ColoursTakeNoColumns) {
    Table table({"State", "X"});
    table.Add({{"ok", Colour::kGood}, "1"});
    table.Add({{"bad", Colour::kBad}, "2"});
    EXPECT_THAT(table.Rows({true, 0}),
                ElementsAre("State  X", "\x1b[32mok\x1b[0m     1", "\x1b[1;31mbad\x1b[0m    2"));
    EXPECT_THAT(table.Rows(), ElementsAre("State  X", "ok     1", "bad    2"));
}
