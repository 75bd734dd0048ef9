#include "Host/kruteinctl/Table.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using testing::ElementsAre;

TEST(Table, ColumnsAreAsWideAsTheirWidestCell) {
    Table table({"A", "Name", "Last"});
    table.Add({"long one", "b", "c"});
    table.Add({"d", "e", "not padded"});
    EXPECT_THAT(table.Lines(), ElementsAre("A         Name  Last",  //
                                           "long one  b     c",     //
                                           "d         e     not padded"));
}

TEST(Table, WidthIsCountedInColumnsOfATerminal) {
    Table table({"Device", "X"});
    table.Add({"Ä 📱", "1"});
    table.Add({"手机手机", "2"});
    EXPECT_THAT(table.Lines(), ElementsAre("Device    X",  //
                                           "Ä 📱      1",   //
                                           "手机手机  2"));
}

TEST(Table, WhatATerminalCouldTakeForCommandsIsReplaced) {
    Table table({"A"});
    table.Add({"\x1b[2Jx\ny"});
    EXPECT_THAT(table.Lines(), ElementsAre("A", "?[2Jx?y"));
}
