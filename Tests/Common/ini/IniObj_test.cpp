#include "Common/ini/IniObj.h"

#include <gtest/gtest.h>

#include <memory>

#include "Common/ini/iniparser.h"
#include "Tests/support/MemoryStream.h"
#include "Tests/support/TemporaryFolder.h"

namespace {

std::string Grouped(const dictionary* d) {
    const MemoryStream out;
    iniparser_patch_dump_ini(d, out.Stream());
    return out.Text();
}

/// Messages about files that are broken on purpose are not for the test's output.
int Quiet(const char* /*format*/, ...) {
    return 0;
}

class IniObjTest : public testing::Test {
 protected:
    IniObjTest() { iniparser_set_error_callback(Quiet); }
    ~IniObjTest() override { iniparser_set_error_callback(nullptr); }

    /// What is in a file after it has been loaded and saved.
    std::string Resaved(const std::string& content) const {
        CIniObj ini;
        EXPECT_TRUE(ini.load(folder.Write("file.ini", content)));
        ini.save();
        return folder.Read("file.ini");
    }

    TemporaryFolder folder;
};

}  // namespace

TEST_F(IniObjTest, AMissingFileIsCreatedEmpty) {
    CIniObj ini;
    EXPECT_TRUE(ini.load(folder.Path() + "\\new.ini"));
    EXPECT_EQ(folder.Read("new.ini"), "");
    EXPECT_EQ(ini.getIni_string("s", "k", "def"), "def");
}

TEST_F(IniObjTest, AFileThatCannotBeCreatedFails) {
    CIniObj ini;
    EXPECT_FALSE(ini.load(folder.Path("no/such/folder.ini")));
}

TEST_F(IniObjTest, GetsValues) {
    CIniObj ini;
    ASSERT_TRUE(ini.load(folder.Write("a.ini", "[Sec]\nText = Some Value\nHex = 0x10\nOct = 010\n")));
    EXPECT_EQ(ini.getIni_string("sec", "TEXT", "def"), "Some Value");
    EXPECT_EQ(ini.getIni_string("sec", "none", "def"), "def");
    EXPECT_EQ(ini.getIni_string("", "text", "def"), "def");
    EXPECT_EQ(ini.getIni_int("sec", "hex", -1), 16);
    EXPECT_EQ(ini.getIni_int("sec", "oct", -1), 8);
    EXPECT_EQ(ini.getIni_int("sec", "none", -1), -1);
    EXPECT_EQ(ini.getIni_int("", "hex", -1), -1);
}

TEST_F(IniObjTest, AKeyWithoutAValueGivesTheDefault) {
    CIniObj ini;
    ASSERT_TRUE(ini.load(folder.Write("a.ini", "[a:b]\n")));
    EXPECT_EQ(ini.getIni_string("a", "b", "def"), "def");
    EXPECT_EQ(ini.getIni_int("a", "b", -1), -1);
}

TEST_F(IniObjTest, AnUnloadedObjectAnswersWithDefaults) {
    CIniObj ini;
    EXPECT_EQ(ini.getIni_string("s", "k", "def"), "def");
    EXPECT_EQ(ini.getIni_int("s", "k", -1), -1);
    EXPECT_FALSE(ini.setIni_string("s", "k", "v"));
    EXPECT_FALSE(ini.setIni_int("s", "k", 1));
    ini.save();
    ini.unload();
}

TEST_F(IniObjTest, SetsAndSaves) {
    CIniObj ini;
    ASSERT_TRUE(ini.load(folder.Path("a.ini")));
    EXPECT_TRUE(ini.setIni_string("Backup_Info", "B", "Two"));
    EXPECT_TRUE(ini.setIni_int("backup_info", "a", -1));
    EXPECT_TRUE(ini.setIni_string("other", "x", "y"));
    EXPECT_FALSE(ini.setIni_string("", "k", "v"));
    EXPECT_EQ(ini.getIni_string("backup_info", "b", "def"), "Two");
    ini.save();
    EXPECT_EQ(folder.Read("a.ini"), "[backup_info]\nb = Two\na = -1\n\n[other]\nx = y\n\n");
    EXPECT_TRUE(ini.setIni_string("other", "x", "z"));
    ini.save();
    EXPECT_EQ(folder.Read("a.ini"), "[backup_info]\nb = Two\na = -1\n\n[other]\nx = z\n\n");
}

TEST_F(IniObjTest, AFailedLoadKeepsThePathButNothingElse) {
    CIniObj ini;
    ASSERT_TRUE(ini.load(folder.Write("good.ini", "[s]\nk = v\n")));
    EXPECT_FALSE(ini.load(folder.Write("bad.ini", "junk\n")));
    EXPECT_EQ(ini.getIni_string("s", "k", "def"), "def");
    ini.save();
    EXPECT_EQ(folder.Read("good.ini"), "[s]\nk = v\n");
    EXPECT_EQ(folder.Read("bad.ini"), "junk\n");
}

TEST_F(IniObjTest, ASecondLoadReplacesTheFirst) {
    CIniObj ini;
    ASSERT_TRUE(ini.load(folder.Write("a.ini", "[s]\nk = 1\n")));
    ASSERT_TRUE(ini.load(folder.Write("b.ini", "[s]\nl = 2\n")));
    EXPECT_EQ(ini.getIni_string("s", "k", "def"), "def");
    EXPECT_EQ(ini.getIni_string("s", "l", "def"), "2");
}

TEST_F(IniObjTest, SectionsAreSortedAndThoseWithoutKeysGo) {
    EXPECT_EQ(Resaved("[b]\nk = 1\n[empty]\n[a]\nl = 2\nm = 3\n"), "[a]\nl = 2\nm = 3\n\n[b]\nk = 1\n\n");
    EXPECT_EQ(Resaved("[empty]\n"), "");
}

TEST_F(IniObjTest, KeysBeforeAnySectionGetEmptyBrackets) {
    EXPECT_EQ(Resaved("k = 1\n[a]\nl = 2\n"), "[]\nk = 1\n\n[a]\nl = 2\n\n");
    EXPECT_EQ(Resaved("[]\nk = 1\n\n"), "[]\nk = 1\n\n") << "and stay as they are from then on";
}

TEST_F(IniObjTest, KeysWithAColonAreLeftOut) {
    EXPECT_EQ(Resaved("[a]\nk:l = 1\nm = 2\n"), "[a]\nm = 2\n\n");
}

TEST_F(IniObjTest, ASectionNameWithAColonIsWrittenAsAnEmptyValue) {
    EXPECT_EQ(Resaved("[a:b]\n[c]\nk = 1\n"), "[a]\nb = \n\n[c]\nk = 1\n\n");
}

TEST_F(IniObjTest, ValuesAreWrittenWithoutQuotes) {
    EXPECT_EQ(Resaved("k = \" a ; b \"\n"), "[]\nk =  a ; b \n\n");
}

TEST_F(IniObjTest, FormatsKeys) {
    CIniObj ini;
    std::string key = "kept";
    EXPECT_FALSE(ini.formatIniKey(nullptr, "k", key));
    EXPECT_FALSE(ini.formatIniKey("", "k", key));
    EXPECT_EQ(key, "kept");
    EXPECT_TRUE(ini.formatIniKey("s", "k", key));
    EXPECT_EQ(key, "s:k");
    EXPECT_TRUE(ini.formatIniKey("s", nullptr, key));
    EXPECT_EQ(key, "s");
}

TEST(GroupingWriter, WritesNothingForNullArguments) {
    iniparser_patch_dump_ini(nullptr, stdout);
    const std::unique_ptr<dictionary, void (*)(dictionary*)> d(dictionary_new(0), dictionary_del);
    iniparser_patch_dump_ini(d.get(), nullptr);
    EXPECT_EQ(Grouped(d.get()), "");
}
