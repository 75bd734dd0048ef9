#include "Host/BackupFormat/BackupCatalogue.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "Tests/support/BackupBuilder.h"

using krutein::BackupCatalogue;
using krutein::BackupDamage;
using krutein::BackupEntry;
using krutein::BackupLayout;
using krutein::Interrupt;
using testing::HasSubstr;

namespace fs = std::filesystem;
using Kind = BackupEntry::Kind;

namespace {

std::vector<BackupEntry> EntriesOf(BackupCatalogue& catalogue) {
    std::vector<BackupEntry> entries;
    for (BackupEntry entry; catalogue.Next(entry);)
        entries.push_back(entry);
    return entries;
}

/// What damage is told with while a catalogue is read to its end; "" for none.
std::string DamageOf(const std::string& path, BackupLayout layout, std::size_t* before = nullptr) {
    const Interrupt never;
    try {
        const auto catalogue = BackupCatalogue::Open(path, layout, never);
        for (BackupEntry entry; catalogue->Next(entry);)
            if (before != nullptr) ++*before;
        return {};
    } catch (const BackupDamage& damage) {
        return damage.what();
    }
}

class Catalogue : public testing::TestWithParam<Layout> {
 protected:
    BackupLayout InLayout() const {
        return GetParam() == Layout::kNew ? BackupLayout::kNewer : BackupLayout::kOlder;
    }

    std::string Write() {
        return builder.Write(GetParam()) + (GetParam() == Layout::kNew ? "Manifest.db" : "Manifest.mbdb");
    }

    std::vector<BackupEntry> Read(const std::string& path) {
        return EntriesOf(*BackupCatalogue::Open(path, InLayout(), never));
    }

    BackupBuilder builder;
    Interrupt never;
};

}  // namespace

TEST_P(Catalogue, GivesItsEntriesInTheirOrder) {
    const std::string messages = builder.Add("HomeDomain", "Library/SMS/sms.db", "twelve bytes");
    builder.AddRow("HomeDomain", "Library/SMS");
    const std::string picture = builder.Add("CameraRollDomain", "Média/图片 1.jpg", "");
    const std::vector<BackupEntry> entries = Read(Write());
    ASSERT_EQ(entries.size(), 3U);
    EXPECT_EQ(entries[0].domain, "HomeDomain");
    EXPECT_EQ(entries[0].path, "Library/SMS/sms.db");
    EXPECT_EQ(entries[0].kind, Kind::kFile);
    EXPECT_EQ(entries[0].fileId, messages);
    EXPECT_EQ(entries[0].id->Text(), messages);
    EXPECT_EQ(entries[0].bytes, 12U);
    EXPECT_EQ(entries[0].mode, 0100644U);
    EXPECT_EQ(entries[1].kind, Kind::kFolder);
    EXPECT_EQ(entries[1].mode, 040755U);
    EXPECT_EQ(entries[2].path, "Média/图片 1.jpg");
    EXPECT_EQ(entries[2].fileId, picture);
    EXPECT_EQ(entries[2].bytes, 0U);
}

TEST_P(Catalogue, MayHaveNoEntries) {
    EXPECT_TRUE(Read(Write()).empty());
}

TEST_P(Catalogue, IsReadFromAnyPath) {
    builder.Add("HomeDomain", "a");
    const TemporaryFolder folder;
    const std::string odd = folder.Path("100%25 ?mode=rw#x üñ");
    fs::copy(fs::path(Write()).parent_path(), odd, fs::copy_options::recursive);
    EXPECT_EQ(Read(odd + (GetParam() == Layout::kNew ? "/Manifest.db" : "/Manifest.mbdb")).size(), 1U);
}

TEST_P(Catalogue, ThatIsMissingOrNoneIsDamage) {
    const std::string path = Write();
    fs::remove(path);
    EXPECT_EQ(DamageOf(path, InLayout()), path + " is missing");
    fs::create_directory(path);
    EXPECT_EQ(DamageOf(path, InLayout()), path + " is no file");
    fs::remove(path);
    for (const char* content :
         {"", "x", "no catalogue at all, but as long as the header of one would be ...."}) {
        TemporaryFolder folder;
        EXPECT_THAT(DamageOf(folder.Write("catalogue", content), InLayout()), HasSubstr("catalogue"))
            << content;
    }
}

TEST_P(Catalogue, BehindALinkIsDamage) {
    builder.Add("HomeDomain", "a");
    const std::string path = Write();
    fs::rename(path, path + ".elsewhere");
    fs::create_symlink(path + ".elsewhere", path);
    EXPECT_EQ(DamageOf(path, InLayout()), path + " is no file");
}

TEST_P(Catalogue, ThatWasCutIsDamage) {
    for (int i = 0; i < 300; ++i)
        builder.Add("HomeDomain", "Library/" + std::to_string(i));
    const std::string path = Write();
    const std::uintmax_t bytes = fs::file_size(path);
    for (const std::uintmax_t cut :
         {bytes - 1, bytes - 100, bytes / 2 + 1, std::uintmax_t{101}, std::uintmax_t{3}}) {
        fs::resize_file(path, cut);
        EXPECT_THAT(DamageOf(path, InLayout()), HasSubstr(path)) << "cut to " << cut;
    }
}

INSTANTIATE_TEST_SUITE_P(Layouts, Catalogue, testing::Values(Layout::kNew, Layout::kOld));

TEST(ManifestMbdb, GivesTheRecordsBeforeTheDamage) {
    BackupBuilder builder;
    for (int i = 0; i < 10; ++i)
        builder.Add("HomeDomain", std::to_string(i));
    const std::string path = builder.Write(Layout::kOld) + "Manifest.mbdb";
    fs::resize_file(path, fs::file_size(path) - 1);
    std::size_t before = 0;
    EXPECT_THAT(DamageOf(path, BackupLayout::kOlder, &before), HasSubstr("after 9 records"));
    EXPECT_EQ(before, 9U);
}

TEST(ManifestMbdb, AnyPrefixIsDamageUnlessARecordEndsThere) {
    BackupBuilder builder;
    builder.Add("HomeDomain", "a");
    builder.Add("HomeDomain", "b");
    const std::string path = builder.Write(Layout::kOld) + "Manifest.mbdb";
    const std::uintmax_t bytes = fs::file_size(path);
    const std::uintmax_t record = (bytes - 6) / 2;
    for (std::uintmax_t length = bytes; length > 0; --length) {
        fs::resize_file(path, length);
        const bool whole = length == 6 || length == 6 + record || length == bytes;
        EXPECT_EQ(DamageOf(path, BackupLayout::kOlder).empty(), whole) << length;
    }
}

TEST(ManifestDb, IdsAreTakenInAnyCaseAndOthersAsNone) {
    BackupBuilder builder;
    builder.ChangeManifest(
        "INSERT INTO Files VALUES ('3D0D7E5FB2CE288813306E4D4636395E047A3D28', 'd', 'p', 1, NULL)");
    builder.ChangeManifest("INSERT INTO Files VALUES ('../../etc/passwd', 'd', 'p', 1, x'00')");
    builder.ChangeManifest("INSERT INTO Files VALUES (NULL, NULL, NULL, NULL, NULL)");
    const Interrupt never;
    const std::string path = builder.Write(Layout::kNew) + "Manifest.db";
    const auto entries = EntriesOf(*BackupCatalogue::Open(path, BackupLayout::kNewer, never));
    ASSERT_EQ(entries.size(), 3U);
    EXPECT_EQ(entries[0].id->Text(), "3d0d7e5fb2ce288813306e4d4636395e047a3d28");
    EXPECT_FALSE(entries[0].bytes);
    EXPECT_EQ(entries[1].fileId, "../../etc/passwd");
    EXPECT_FALSE(entries[1].id);
    EXPECT_FALSE(entries[2].id);
    EXPECT_EQ(entries[2].kind, Kind::kUnknown);
}

TEST(ManifestDb, WithoutItsTableIsDamage) {
    BackupBuilder builder;
    builder.ChangeManifest("DROP TABLE Files");
    const std::string path = builder.Write(Layout::kNew) + "Manifest.db";
    EXPECT_THAT(DamageOf(path, BackupLayout::kNewer), HasSubstr("no such table"));
}

TEST(ManifestDb, WithADestroyedPageIsDamage) {
    BackupBuilder builder;
    for (int i = 0; i < 500; ++i)
        builder.Add("HomeDomain", "Library/" + std::to_string(i));
    const std::string path = builder.Write(Layout::kNew) + "Manifest.db";
    std::string content = ReadWholeFile(path);
    // All but the first page, which holds the schema.
    for (std::size_t i = 4096; i < content.size(); ++i)
        content[i] = '\x55';
    TemporaryFolder folder;
    EXPECT_THAT(DamageOf(folder.Write("Manifest.db", content), BackupLayout::kNewer),
                HasSubstr("Manifest.db"));
}
