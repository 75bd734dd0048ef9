#include "Host/kruteinctl/Table.h"

#include <gtest/gtest.h>

TEST(Table, ColumnsAreAsWideAsTheirWidestCell) {
    Table table({"A", "Name", "Last"});
    table.Add({"long one", "b", "c"});
    table.Add({"d", "e", "not padded"});
    EXPECT_EQ(table.Text(),
              "A         Name  Last\n"
              "long one  b     c\n"
              "d         e     not padded\n");
}

TEST(Table, WidthIsCountedInColumnsOfATerminal) {
    Table table({"Device", "X"});
    table.Add({"Ä 📱", "1"});
    table.Add({"手机手机", "2"});
    EXPECT_EQ(table.Text(),
              "Device    X\n"
              "Ä 📱      1\n"
              "手机手机  2\n");
}

TEST(Table, WhatATerminalCouldTakeForCommandsIsReplaced) {
    Table table({"A"});
    table.Add({"\x1b[2Jx\ny"});
    EXPECT_EQ(table.Text(), "A\n?[2Jx?y\n");
}
