#include <gtest/gtest.h>
#include <sys/stat.h>

#include <string>

#include "Common/std/std_file.h"
#include "Tests/support/ResourceCount.h"
#include "Tests/support/TemporaryFolder.h"

namespace {

/// A folder with the one template file "t.txt".
class TextTemplate : public testing::Test {
 protected:
    void Holds(const std::string& text) const { m_folder.Write("t.txt", text); }

    template <typename... Texts>
    std::string Filled(Texts... texts) const {
        return STD_FILE_LoadTextTempleteA(m_folder.Path(), "t.txt", static_cast<int>(sizeof...(texts)),
                                          texts...);
    }

    TemporaryFolder m_folder;
};

}  // namespace

TEST_F(TextTemplate, FillsNumberedPlaceholders) {
    Holds("Hello $$1, you are $$2. Bye $$1.");
    EXPECT_EQ(Filled("Ann", "ten"), "Hello Ann, you are ten. Bye Ann.");
}

TEST_F(TextTemplate, WithoutArgumentsIsTheTextAsItStands) {
    Holds("Hello $$1.\r\n$$0 \xF0\x9F\x93\xB1 \xFF");
    EXPECT_EQ(Filled(), "Hello $$1.\r\n$$0 \xF0\x9F\x93\xB1 \xFF");
    EXPECT_EQ(STD_FILE_LoadTextTempleteA(m_folder.Path(), "t.txt", -1, "unused"),
              "Hello $$1.\r\n$$0 \xF0\x9F\x93\xB1 \xFF");
}

TEST_F(TextTemplate, KeepsPlaceholdersBeyondTheCount) {
    Holds("$$1 $$2 $$3 $$01 $1 $$");
    EXPECT_EQ(Filled("a", "b"), "a b $$3 $$01 $1 $$");
}

TEST_F(TextTemplate, MayUseNoneOfItsArguments) {
    Holds("plain");
    EXPECT_EQ(Filled("a", "b"), "plain");
}

TEST_F(TextTemplate, MayBecomeEmpty) {
    Holds("$$1$$1");
    EXPECT_EQ(Filled(""), "");
}

TEST_F(TextTemplate, FillsTenAsOneAndADigit) {
    Holds("$$1 $$9 $$10 $$11");
    EXPECT_EQ(Filled("a", "2", "3", "4", "5", "6", "7", "8", "i", "j", "k"), "a i a0 a1");
}

TEST_F(TextTemplate, FillsWhatAnEarlierArgumentBroughtIn) {
    Holds("$$1, $$2, $$3");
    EXPECT_EQ(Filled("<$$3>", "two", "three"), "<three>, two, three");
}

TEST_F(TextTemplate, DoesNotFillWhatALaterArgumentBroughtIn) {
    Holds("$$1, $$2");
    EXPECT_EQ(Filled("one", "<$$1$$2>"), "one, <$$1$$2>");
}

TEST_F(TextTemplate, LetsPiecesJoinIntoALaterPlaceholder) {
    Holds("$$$12");
    EXPECT_EQ(Filled("$", "two"), "two");
}

TEST_F(TextTemplate, EndsAtTheFirstZeroByte) {
    Holds(std::string("before $$1\0after $$1", 20));
    EXPECT_EQ(Filled("x"), "before x");
    Holds(std::string("\0after", 6));
    EXPECT_EQ(Filled("x"), "");
}

TEST_F(TextTemplate, TakesLongTextsWhole) {
    Holds("<$$1>");
    const std::string text(10000, 'x');
    EXPECT_EQ(Filled(text.c_str()), "<" + text + ">");
}

TEST_F(TextTemplate, IsEmptyForAMissingOrAnEmptyFile) {
    EXPECT_EQ(Filled("x"), "");
    Holds("");
    EXPECT_EQ(Filled("x"), "");
}

TEST_F(TextTemplate, IsEmptyForAFolder) {
    ASSERT_EQ(mkdir(m_folder.Path("t.txt").c_str(), 0755), 0);
    EXPECT_EQ(Filled("x"), "");
}

TEST_F(TextTemplate, TakesAFolderWithASlashOrABackslashAtItsEnd) {
    Holds("$$1");
    EXPECT_EQ(STD_FILE_LoadTextTempleteA(m_folder.Path() + "/", "t.txt", 1, "x"), "x");
    EXPECT_EQ(STD_FILE_LoadTextTempleteA(m_folder.Path() + "\\", "t.txt", 1, "x"), "x");
}

TEST_F(TextTemplate, TakesANullAsAnEmptyText) {
    Holds("<$$1>");
    EXPECT_EQ(Filled(static_cast<const char*>(nullptr)), "<>");
}

TEST_F(TextTemplate, LeavesNothingOpen) {
    Holds("$$1");
    const ResourceCount before = ResourceCount::Now();
    for (int i = 0; i < 100; ++i)
        Filled("x");
    EXPECT_EQ(ResourceCount::Now(), before);
}

TEST_F(TextTemplate, ReadsNothingInItsWideForm) {
    Holds("$$1");
    const std::string folder = m_folder.Path();
    EXPECT_EQ(STD_FILE_LoadTextTempleteW(std::wstring(folder.begin(), folder.end()), L"t.txt", 1, L"x"), L"");
    EXPECT_EQ(STD_FILE_LoadTextTempleteW(L"", L"", 0), L"");
}
