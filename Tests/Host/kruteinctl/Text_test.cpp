#include "Host/kruteinctl/Text.h"

#include <gtest/gtest.h>

#include <limits>

TEST(HumanBytes, UsesPowersOfAThousand) {
    EXPECT_EQ(HumanBytes(0), "0 bytes");
    EXPECT_EQ(HumanBytes(1), "1 byte");
    EXPECT_EQ(HumanBytes(999), "999 bytes");
    EXPECT_EQ(HumanBytes(1000), "1.0 kB");
    EXPECT_EQ(HumanBytes(999'949), "999.9 kB");
    EXPECT_EQ(HumanBytes(999'950), "1.0 MB") << "never 1000.0 kB";
    EXPECT_EQ(HumanBytes(1'234'567'890), "1.2 GB");
    EXPECT_EQ(HumanBytes(std::numeric_limits<std::uint64_t>::max()), "18.4 EB");
}

TEST(ExactBytes, GivesTheNumberToo) {
    EXPECT_EQ(ExactBytes(5), "5 bytes");
    EXPECT_EQ(ExactBytes(1234), "1.2 kB (1234 bytes)");
}

TEST(HumanTime, HasHoursOnlyWhenThereAreAny) {
    EXPECT_EQ(HumanTime(std::chrono::seconds(7)), "0:07");
    EXPECT_EQ(HumanTime(std::chrono::seconds(754)), "12:34");
    EXPECT_EQ(HumanTime(std::chrono::seconds(3723)), "1:02:03");
    EXPECT_EQ(HumanTime(std::chrono::seconds(-1)), "0:00");
}

TEST(Printable, KeepsWhatCanBeRead) {
    EXPECT_EQ(Printable("IMG 1.JPG"), "IMG 1.JPG");
    EXPECT_EQ(Printable("Grüße 中文 🎉"), "Grüße 中文 🎉");
}

TEST(Printable, LetsNoCommandThroughToTheTerminal) {
    EXPECT_EQ(Printable("a\x1b[2Jb\nc\rd\x7f"), "a?[2Jb?c?d?");
    EXPECT_EQ(Printable("\xC2\x9B"), "?") << "the eight-bit form of the escape sequence";
    EXPECT_EQ(Printable("gpj.\xE2\x80\xAE!"), "gpj.?!") << "turns the direction of what follows";
}

TEST(Printable, ReplacesBrokenUtf8) {
    EXPECT_EQ(Printable("a\xFFz"), "a?z");
    EXPECT_EQ(Printable("\xC0\xAF"), "??") << "an overlong slash";
    EXPECT_EQ(Printable("\xE4\xB8"), "??") << "cut off";
    EXPECT_EQ(Printable("\xED\xA0\x80"), "???") << "half a pair";
    EXPECT_EQ(Printable("\xF5\x80\x80\x80"), "????") << "beyond the last character";
}

TEST(Columns, CountsWhatATerminalDraws) {
    EXPECT_EQ(Columns("abc"), 3U);
    EXPECT_EQ(Columns("Grüße…"), 6U);
    EXPECT_EQ(Columns("中文"), 4U);
    EXPECT_EQ(Columns("🎉"), 2U);
    EXPECT_EQ(Columns("e\u0301"), 1U);
}

TEST(Shortened, KeepsTheEnds) {
    EXPECT_EQ(Shortened("abcdefghij", 10), "abcdefghij");
    EXPECT_EQ(Shortened("abcdefghij", 7), "abc…hij");
    EXPECT_EQ(Shortened("abcdefghij", 1), "…");
    EXPECT_EQ(Shortened("abcdefghij", 0), "");
}

TEST(Shortened, NeverCutsACharacter) {
    const std::string text = "ääääääääää";
    for (std::size_t columns = 0; columns <= 12; ++columns) {
        const std::string shortened = Shortened(text, columns);
        EXPECT_EQ(Printable(shortened), shortened);
    }
}
