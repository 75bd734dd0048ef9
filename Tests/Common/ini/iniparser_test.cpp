#include "Common/ini/iniparser.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdarg>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "Tests/support/MemoryStream.h"
#include "Tests/support/TemporaryFolder.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

using Dictionary = std::unique_ptr<dictionary, void (*)(dictionary*)>;

std::vector<std::string> g_messages;

int Remember(const char* format, ...) {
    char text[4096];
    std::va_list arguments;
    va_start(arguments, format);
    const int length = std::vsnprintf(text, sizeof text, format, arguments);
    va_end(arguments);
    g_messages.emplace_back(text);
    return length;
}

class IniTest : public testing::Test {
 protected:
    IniTest() {
        g_messages.clear();
        iniparser_set_error_callback(Remember);
    }
    ~IniTest() override { iniparser_set_error_callback(nullptr); }

    Dictionary Load(const std::string& content) const {
        return {iniparser_load(folder.Write("file.ini", content).c_str()), iniparser_freedict};
    }

    /// The entries of a file in the order of their slots: "key=value", "key" for a section; "failed".
    std::string Entries(const std::string& content) const {
        const Dictionary d = Load(content);
        if (d == nullptr) return "failed";
        std::string entries;
        for (int i = 0; i < d->size; ++i) {
            if (d->key[i] == nullptr) continue;
            if (!entries.empty()) entries += " | ";
            entries += d->key[i];
            if (d->val[i] != nullptr) entries += std::string("=") + d->val[i];
        }
        return entries;
    }

    TemporaryFolder folder;
};

std::string Stripped(std::string text) {
    static constexpr char kSpace[] = " \t\n\v\f\r";
    text.erase(text.find_last_not_of(kSpace) + 1);
    return text.erase(0, std::min(text.size(), text.find_first_not_of(kSpace)));
}

std::string LowerCase(std::string text) {
    for (char& c : text)
        c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    return text;
}

/// What a line in the section s stands for, as the scanning function of the C library has it: the syntax was
/// first written down in its patterns. As Entries.
std::string ByThePatterns(const std::string& given) {
    const std::string line = Stripped(given);
    if (line.empty() || line[0] == ';' || line[0] == '#') return "s";
    char name[64] = {};
    char value[64] = {};
    if (line.front() == '[' && line.back() == ']') {
        static_cast<void>(std::sscanf(line.c_str(), "[%63[^]]", name));
        const std::string section = LowerCase(Stripped(name));
        return section == "s" ? "s" : "s | " + section;
    }
    const auto matches = [&](const char* pattern) {
        return std::sscanf(line.c_str(), pattern, name, value) == 2;
    };
    std::string text;
    if (matches("%63[^=] = \"%63[^\"]\"") || matches("%63[^=] = '%63[^']'")) {
        text = value;
    } else if (matches("%63[^=] = %63[^;#]")) {
        text = Stripped(value);
        if (text == "\"\"" || text == "''") text.clear();
    } else if (!matches("%63[^=] = %63[;#]") && !matches("%63[^=] %63[=]")) {
        return "failed";
    }
    return "s | s:" + LowerCase(Stripped(name)) + "=" + text;
}

std::string DumpIni(const dictionary* d) {
    const MemoryStream out;
    iniparser_dump_ini(d, out.Stream());
    return out.Text();
}

std::string DumpSection(const dictionary* d, const char* section) {
    const MemoryStream out;
    iniparser_dumpsection_ini(d, section, out.Stream());
    return out.Text();
}

}  // namespace

// Reading.

TEST_F(IniTest, SectionsKeysAndValues) {
    EXPECT_EQ(Entries("[Sec]\nKey = Value\n"), "sec | sec:key=Value");
    EXPECT_EQ(Entries("[ Sec ]\n  Key  =  two words  \n"), "sec | sec:key=two words");
    EXPECT_EQ(Entries("[a]\nk=1\n[b]\nk=2\n"), "a | a:k=1 | b | b:k=2");
    EXPECT_EQ(Entries(""), "");
}

TEST_F(IniTest, AFileWithWindowsLineEndsReadsTheSame) {
    EXPECT_EQ(Entries("[Sec]\r\nKey = Value\r\n\r\n"), "sec | sec:key=Value");
}

TEST_F(IniTest, KeysBeforeAnySectionAreInTheEmptyOne) {
    EXPECT_EQ(Entries("Key = Value\n"), ":key=Value");
}

TEST_F(IniTest, TheLastLineNeedsNoLineEnd) {
    EXPECT_EQ(Entries("[s]\nk=v"), "s | s:k=v");
}

TEST_F(IniTest, CommentsAreIgnored) {
    EXPECT_EQ(Entries("; one\n# two\n   ; three\n\t# four\n\n[s]\nk=v\n"), "s | s:k=v");
    EXPECT_EQ(Entries("Key = Value ; note\n"), ":key=Value");
    EXPECT_EQ(Entries("Key = Value # note\n"), ":key=Value");
}

TEST_F(IniTest, QuotedValuesKeepTheirSpacesAndSigns) {
    EXPECT_EQ(Entries("k = \"  a ; b # c  \"\n"), ":k=  a ; b # c  ");
    EXPECT_EQ(Entries("k = '  a ; b  ' ; note\n"), ":k=  a ; b  ");
    EXPECT_EQ(Entries("k = \"it's\"\n"), ":k=it's");
    EXPECT_EQ(Entries("k = \"unclosed\n"), ":k=unclosed");
}

TEST_F(IniTest, LinesAreReadAsThePatternsOfTheSyntaxSay) {
    std::mt19937 random(20261121);
    static constexpr char kSigns[] = "ab= \t\"';#[]:\\\xC3\xA4";
    for (int n = 0; n < 1500; ++n) {
        std::string line;
        for (auto length = random() % 12; line.size() <= length;)
            line.push_back(kSigns[random() % (sizeof kSigns - 1)]);
        EXPECT_EQ(Entries("[s]\n" + line + "\n"), ByThePatterns(line)) << line;
    }
}

TEST_F(IniTest, ALongFileKeepsItsOrderAndTheLastValueOfEachKey) {
    std::string content;
    std::string expected;
    for (int i = 0; i < 3000; ++i) {
        const std::string number = std::to_string(i);
        if (i % 100 == 0) {
            content += "[section" + number + "]\n";
            expected += (i == 0 ? "" : " | ") + std::string("section") + number;
        }
        content += "key" + number + " = first\n";
        expected += " | section" + std::to_string(i / 100 * 100);
        expected.append(":key").append(number).append("=last").append(number);
    }
    for (int i = 0; i < 3000; ++i) {
        const std::string number = std::to_string(i);
        if (i % 100 == 0) content += "[SECTION" + number + "]\n";
        content.append("KEY").append(number).append(" = last").append(number).append("\n");
    }
    EXPECT_EQ(Entries(content), expected);
}

TEST_F(IniTest, EmptyValues) {
    for (const char* line : {"a=", "a = ;", "a = #", "a=;note", "a = ''", "a = \"\"", "a = '' ; note"}) {
        EXPECT_EQ(Entries(std::string(line) + "\n"), ":a=") << line;
    }
}

TEST_F(IniTest, ValuesMayHoldAnEqualsSignAndAColon) {
    EXPECT_EQ(Entries("[s]\nk = a=b:c\n"), "s | s:k=a=b:c");
    EXPECT_EQ(Entries("k = [x]\n"), ":k=[x]");
}

TEST_F(IniTest, ASectionNameEndsAtItsFirstBracket) {
    EXPECT_EQ(Entries("[a]b]\nk=1\n"), "a | a:k=1");
}

TEST_F(IniTest, AnEmptySectionNameMakesTheEmptySectionCurrent) {
    EXPECT_EQ(Entries("[s]\n[]\nk=1\n"), "s |  | :k=1");
}

TEST_F(IniTest, ASectionNameWithAColonStoresAKeyWithoutAValue) {
    const Dictionary d = Load("[a:b]\nk=1\n");
    ASSERT_NE(d, nullptr);
    EXPECT_EQ(iniparser_find_entry(d.get(), "a:b"), 1);
    EXPECT_EQ(iniparser_getstring(d.get(), "a:b", "def"), nullptr);
    EXPECT_STREQ(iniparser_getstring(d.get(), "a:b:k", "def"), "1");
}

TEST_F(IniTest, RepeatedKeysAndSectionsKeepTheirSlot) {
    EXPECT_EQ(Entries("[a]\nk=1\nl=2\n[b]\nm=3\n[A]\nK=4\n"), "a | a:k=4 | a:l=2 | b | b:m=3");
}

TEST_F(IniTest, ABackslashAtTheEndJoinsNothing) {
    EXPECT_EQ(Entries("a = x\\\nb = y\n"), ":a=x\\ | :b=y");
}

TEST_F(IniTest, AByteOrderMarkIsSkipped) {
    EXPECT_EQ(Entries("\xEF\xBB\xBF[s]\nk=v\n"), "s | s:k=v");
    EXPECT_EQ(Entries("\xEF\xBB\xBF"), "");
    EXPECT_EQ(Entries("a=1"), ":a=1") << "three other bytes are read again";
}

TEST_F(IniTest, AFileOfLessThanThreeBytesReadsAsEmpty) {
    EXPECT_EQ(Entries("a="), "");
    EXPECT_EQ(Entries("x"), "") << "it would be no INI syntax";
}

TEST_F(IniTest, ALongLineIsReadAsSeveral) {
    const std::string value(1100, 'v');
    // The first 1023 bytes are one line; what is left has no equals sign.
    EXPECT_EQ(Entries("k=" + value + "\n"), "failed");
    EXPECT_EQ(Entries("k=" + value + "=w\n"),
              ":k=" + std::string(1021, 'v') + " | :" + std::string(1100 - 1021, 'v') + "=w");
    EXPECT_EQ(Entries("k=" + std::string(1021, 'v') + "\nl=1\n"), ":k=" + std::string(1021, 'v') + " | :l=1");
}

TEST_F(IniTest, NamesOfTheLongestLineAreTakenWhole) {
    const std::string name(1020, 'N');
    const Dictionary d = Load("[" + name + "]\n" + name + "=1\n");
    ASSERT_NE(d, nullptr);
    const std::string lower(1020, 'n');
    EXPECT_STREQ(d->key[1], (lower + ":" + lower).c_str());
}

TEST_F(IniTest, ASyntaxErrorFailsTheWholeFile) {
    EXPECT_EQ(Entries("[s]\nk=v\n\njunk\n[unclosed\n=novalue\nl=w\n"), "failed");
    const std::string path = folder.Path("file.ini");
    EXPECT_THAT(g_messages, ElementsAre("iniparser: syntax error in " + path + " (4):\n-> junk\n",
                                        "iniparser: syntax error in " + path + " (5):\n-> [unclosed\n",
                                        "iniparser: syntax error in " + path + " (6):\n-> =novalue\n"));
}

TEST_F(IniTest, WhatCannotBeOpenedIsReported) {
    EXPECT_EQ(iniparser_load(folder.Path("none").c_str()), nullptr);
    EXPECT_EQ(iniparser_load(folder.Path().c_str()), nullptr) << "a folder";
    EXPECT_THAT(g_messages, ElementsAre("iniparser: cannot open " + folder.Path("none") + "\n",
                                        "iniparser: cannot open " + folder.Path() + "\n"));
}

TEST_F(IniTest, MessagesGoToStandardErrorByDefault) {
    iniparser_set_error_callback(nullptr);
    testing::internal::CaptureStderr();
    EXPECT_EQ(iniparser_load("/no/such/file"), nullptr);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "iniparser: cannot open /no/such/file\n");
    EXPECT_THAT(g_messages, IsEmpty());
}

TEST_F(IniTest, BytesOfAnyKindDoNoHarm) {
    EXPECT_EQ(Entries(std::string("k=v\0hidden\nl=w\n", 15)), ":k=v | :l=w");
    EXPECT_EQ(Entries("\xC3\x84=\xC3\xA4\n"), ":\xC3\x84=\xC3\xA4") << "only ASCII is lowered";
    EXPECT_EQ(Entries("k=\xFF\xFE\n"), ":k=\xFF\xFE");
}

TEST(IniPreCheck, StripsTheLineInPlace) {
    char line[] = " \t key = value \r\n";
    EXPECT_EQ(iniparser_patch_2017_10_13(line), 0);
    EXPECT_STREQ(line, "key = value");
    char empty[] = " \t\n";
    EXPECT_EQ(iniparser_patch_2017_10_13(empty), -2);
    EXPECT_STREQ(empty, "");
    char comment[] = "  ; note";
    EXPECT_EQ(iniparser_patch_2017_10_13(comment), -3);
    char hash[] = "# note";
    EXPECT_EQ(iniparser_patch_2017_10_13(hash), 0) << "left to the reader";
}

// Access.

TEST_F(IniTest, LookupsAreBlindToCase) {
    const Dictionary d = Load("[Sec]\nK=1\n");
    for (const char* key : {"sec:k", "SEC:K", "Sec:k"}) {
        EXPECT_STREQ(iniparser_getstring(d.get(), key, "none"), "1") << key;
    }
    EXPECT_STREQ(iniparser_getstring(d.get(), "sec:l", "none"), "none");
    EXPECT_STREQ(iniparser_getstring(nullptr, "sec:k", "none"), "none");
    EXPECT_STREQ(iniparser_getstring(d.get(), nullptr, "none"), "none");
}

TEST_F(IniTest, NamesAreCutAt1024Bytes) {
    const Dictionary d = {dictionary_new(0), iniparser_freedict};
    const std::string longName(2000, 'A');
    EXPECT_EQ(iniparser_set(d.get(), longName.c_str(), "x"), 0);
    EXPECT_STREQ(d->key[0], std::string(1024, 'a').c_str());
    EXPECT_STREQ(iniparser_getstring(d.get(), (longName + "more").c_str(), "none"), "x");
}

TEST_F(IniTest, SectionsAreCountedAndNamed) {
    const Dictionary d = Load("[b]\nk=1\n[a]\nk=1\nl=2\n[empty]\n");
    EXPECT_EQ(iniparser_getnsec(d.get()), 3);
    EXPECT_STREQ(iniparser_getsecname(d.get(), 0), "b");
    EXPECT_STREQ(iniparser_getsecname(d.get(), 2), "empty");
    EXPECT_EQ(iniparser_getsecname(d.get(), 3), nullptr);
    EXPECT_EQ(iniparser_getsecname(d.get(), -1), nullptr);
    EXPECT_EQ(iniparser_getnsec(nullptr), -1);
    EXPECT_EQ(iniparser_getsecname(nullptr, 0), nullptr);
}

TEST_F(IniTest, KeysOfASectionAreCountedAndListed) {
    const Dictionary d = Load("[a]\nk=1\n[ab]\nx=1\n[A]\nl=2\n");
    EXPECT_EQ(iniparser_getsecnkeys(d.get(), "A"), 2);
    EXPECT_EQ(iniparser_getsecnkeys(d.get(), "none"), 0);
    EXPECT_EQ(iniparser_getsecnkeys(nullptr, "a"), 0);
    const char* keys[2] = {};
    EXPECT_EQ(iniparser_getseckeys(d.get(), "A", keys), keys);
    EXPECT_STREQ(keys[0], "a:k");
    EXPECT_STREQ(keys[1], "a:l");
    EXPECT_EQ(iniparser_getseckeys(d.get(), "none", keys), nullptr);
    EXPECT_EQ(iniparser_getseckeys(d.get(), "a", nullptr), nullptr);
}

TEST_F(IniTest, Numbers) {
    const Dictionary d = Load("a=42\nb=0x10\nc=010\nd=-7 apples\ne=apples\nf=2.5e3\ng=4294967297\n");
    EXPECT_EQ(iniparser_getint(d.get(), ":a", -1), 42);
    EXPECT_EQ(iniparser_getint(d.get(), ":b", -1), 16);
    EXPECT_EQ(iniparser_getint(d.get(), ":c", -1), 8);
    EXPECT_EQ(iniparser_getint(d.get(), ":d", -1), -7);
    EXPECT_EQ(iniparser_getint(d.get(), ":e", -1), 0);
    EXPECT_EQ(iniparser_getint(d.get(), ":none", -1), -1);
    EXPECT_EQ(iniparser_getlongint(d.get(), ":g", -1), 4294967297L);
    EXPECT_EQ(iniparser_getint(d.get(), ":g", -1), 1) << "cut to an int";
    EXPECT_DOUBLE_EQ(iniparser_getdouble(d.get(), ":f", -1), 2500);
    EXPECT_DOUBLE_EQ(iniparser_getdouble(d.get(), ":none", -1), -1);
}

TEST_F(IniTest, BooleansGoByTheFirstCharacter) {
    const Dictionary d = Load("[s]\na=yes\nb=True\nc=1\nd=no\ne=False\nf=0\ng=Off\nh=\n");
    for (const char* key : {"s:a", "s:b", "s:c"})
        EXPECT_EQ(iniparser_getboolean(d.get(), key, -1), 1) << key;
    for (const char* key : {"s:d", "s:e", "s:f"})
        EXPECT_EQ(iniparser_getboolean(d.get(), key, -1), 0) << key;
    for (const char* key : {"s:g", "s:h", "s:none", "s"}) {
        EXPECT_EQ(iniparser_getboolean(d.get(), key, -1), -1) << key;
    }
}

TEST_F(IniTest, EntriesAreFoundSetAndRemoved) {
    const Dictionary d = Load("[s]\nk=v\n");
    EXPECT_EQ(iniparser_find_entry(d.get(), "S"), 1);
    EXPECT_EQ(iniparser_find_entry(d.get(), "s:K"), 1);
    EXPECT_EQ(iniparser_find_entry(d.get(), "none"), 0);
    EXPECT_EQ(iniparser_find_entry(nullptr, "s"), 0);
    EXPECT_EQ(iniparser_set(d.get(), "New:Key", "x"), 0);
    EXPECT_STREQ(dictionary_get(d.get(), "new:key", "none"), "x");
    EXPECT_EQ(iniparser_find_entry(d.get(), "new"), 0) << "the section gets no entry";
    EXPECT_EQ(iniparser_set(nullptr, "a", "b"), -1);
    EXPECT_EQ(iniparser_set(d.get(), nullptr, "b"), -1);
    iniparser_unset(d.get(), "NEW:key");
    EXPECT_EQ(iniparser_find_entry(d.get(), "new:key"), 0);
    iniparser_unset(d.get(), nullptr);
}

// Dumping.

TEST_F(IniTest, DumpPrintsEverySlot) {
    const Dictionary d = Load("[s]\nk=v\n");
    const MemoryStream out;
    iniparser_dump(d.get(), out.Stream());
    EXPECT_EQ(out.Text(), "[s]=UNDEF\n[s:k]=[v]\n");
    iniparser_dump(nullptr, out.Stream());
    iniparser_dump(d.get(), nullptr);
}

TEST_F(IniTest, DumpIniPrintsSectionBySection) {
    const Dictionary d = Load("[b]\nk=1\n[a]\na long key of more than thirty characters=2\n");
    EXPECT_EQ(DumpIni(d.get()),
              "\n[b]\nk                              = 1\n\n"
              "\n[a]\na long key of more than thirty characters = 2\n\n"
              "\n");
}

TEST_F(IniTest, DumpIniWithoutSectionsPrintsTheKeysAsTheyAre) {
    const Dictionary d = Load("k=1\nl=\n");
    EXPECT_EQ(DumpIni(d.get()), ":k = 1\n:l = \n");
    const Dictionary none = Load("");
    EXPECT_EQ(DumpIni(none.get()), "");
}

TEST_F(IniTest, ADumpReadsBackAsTheSame) {
    const Dictionary d = Load("[b]\nk=1\nm=\n[a]\nl=two words\n");
    EXPECT_EQ(Entries(DumpIni(d.get())), "b | b:k=1 | b:m= | a | a:l=two words");
}

TEST_F(IniTest, DumpSectionLooksForKeysWithTheNameAsGiven) {
    const Dictionary d = Load("[Sec]\nK=1\n");
    EXPECT_EQ(DumpSection(d.get(), "sec"), "\n[sec]\nk                              = 1\n\n");
    EXPECT_EQ(DumpSection(d.get(), "Sec"), "\n[Sec]\n\n");
    EXPECT_EQ(DumpSection(d.get(), "none"), "");
    EXPECT_EQ(DumpSection(nullptr, "sec"), "");
    iniparser_dumpsection_ini(d.get(), nullptr, stdout);
    iniparser_dumpsection_ini(d.get(), "sec", nullptr);
}
