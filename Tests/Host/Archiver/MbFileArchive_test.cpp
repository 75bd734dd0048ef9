#include "Host/Archiver/MbFileArchive.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <plist/plist.h>

#include <memory>
#include <string>

#include "Host/BackupFormat/MbFile.h"

using krutein::CatalogueEntry;
using krutein::EncodeMbFile;
using krutein::EntryKind;
using krutein::MbFile;
using krutein::ReadMbFile;
using testing::Field;
using testing::Optional;

namespace {

CatalogueEntry Photo(std::int64_t size) {
    return {EntryKind::kFile,
            "0123456789abcdef0123456789abcdef01234567",
            "CameraRollDomain",
            "Media/Ö 1.JPG",
            "",
            size};
}

/// The archive's object at a place, as a node of the whole.
class Archive {
 public:
    explicit Archive(const std::string& bytes) : m_root(nullptr, &plist_free) {
        plist_t root = nullptr;
        plist_from_bin(bytes.data(), static_cast<std::uint32_t>(bytes.size()), &root);
        m_root.reset(root);
    }
    plist_t Object(std::uint32_t place) const {
        return plist_array_get_item(plist_dict_get_item(m_root.get(), "$objects"), place);
    }
    std::uint64_t Number(const char* key) const {
        std::uint64_t number = ~0ULL;
        plist_get_uint_val(plist_dict_get_item(Object(1), key), &number);
        return number;
    }
    std::uint64_t Uid(plist_t dictionary, const char* key) const {
        std::uint64_t uid = ~0ULL;
        plist_get_uid_val(plist_dict_get_item(dictionary, key), &uid);
        return uid;
    }
    plist_t Root() const { return m_root.get(); }

 private:
    std::unique_ptr<void, void (*)(plist_t)> m_root;
};

}  // namespace

TEST(MbFileArchive, IsAKeyedArchiveThatOthersRead) {
    const Archive archive(EncodeMbFile(Photo(1234567)));
    ASSERT_NE(archive.Root(), nullptr);
    EXPECT_STREQ(plist_get_string_ptr(plist_dict_get_item(archive.Root(), "$archiver"), nullptr),
                 "NSKeyedArchiver");
    EXPECT_EQ(archive.Uid(plist_dict_get_item(archive.Root(), "$top"), "root"), 1U);
    EXPECT_STREQ(plist_get_string_ptr(archive.Object(0), nullptr), "$null");
    EXPECT_EQ(archive.Uid(archive.Object(1), "RelativePath"), 2U);
    EXPECT_EQ(archive.Uid(archive.Object(1), "$class"), 3U);
    EXPECT_STREQ(plist_get_string_ptr(archive.Object(2), nullptr), "Media/Ö 1.JPG");
    const plist_t classes = plist_dict_get_item(archive.Object(3), "$classes");
    EXPECT_STREQ(plist_get_string_ptr(plist_dict_get_item(archive.Object(3), "$classname"), nullptr),
                 "MBFile");
    EXPECT_STREQ(plist_get_string_ptr(plist_array_get_item(classes, 1), nullptr), "NSObject");
}

TEST(MbFileArchive, SaysWhatTheFileIs) {
    const Archive archive(EncodeMbFile(Photo(1234567)));
    EXPECT_EQ(archive.Number("Size"), 1234567U);
    EXPECT_EQ(archive.Number("Mode"), 0100644U);
    EXPECT_EQ(archive.Number("UserID"), 501U);
    EXPECT_EQ(archive.Number("GroupID"), 501U);
    EXPECT_EQ(archive.Number("Flags"), 0U);
    EXPECT_EQ(archive.Number("ProtectionClass"), 3U);
    EXPECT_EQ(archive.Number("InodeNumber"), 0x01234567U);
    for (const char* const time : {"LastModified", "LastStatusChange", "Birth"}) {
        EXPECT_GE(archive.Number(time), 1704067200U) << time;
        EXPECT_LT(archive.Number(time), 1735689600U) << time;
    }
}

TEST(MbFileArchive, TellsFoldersAndLinksFromFiles) {
    CatalogueEntry entry = Photo(0);
    entry.kind = EntryKind::kFolder;
    EXPECT_EQ(Archive(EncodeMbFile(entry)).Number("Mode"), 0040755U);
    entry.kind = EntryKind::kLink;
    entry.linkTarget = "../elsewhere";
    const Archive link(EncodeMbFile(entry));
    EXPECT_EQ(link.Number("Mode"), 0120755U);
    EXPECT_EQ(link.Uid(link.Object(1), "Target"), 4U);
    EXPECT_STREQ(plist_get_string_ptr(link.Object(4), nullptr), "../elsewhere");
}

TEST(MbFileArchive, CanBeReadAgain) {
    for (const std::int64_t size : {0LL, 1LL, 255LL, 65536LL, 5'000'000'000LL})
        EXPECT_THAT(ReadMbFile(EncodeMbFile(Photo(size))), Optional(Field(&MbFile::size, size)));
}

TEST(MbFileArchive, HasNoSizeWhenItIsNone) {
    const std::string good = EncodeMbFile(Photo(7));
    for (const std::string& bytes :
         {std::string(), std::string("bplist00"), std::string(500, 'x'), good.substr(1),
          good.substr(0, good.size() - 1), std::string(1 << 20, '\0')})
        EXPECT_FALSE(ReadMbFile(bytes).has_value());
}

TEST(MbFileArchive, SurvivesAnyChangedByte) {
    const std::string good = EncodeMbFile(Photo(7));
    int sizes = 0;
    for (std::size_t place = 0; place < good.size(); ++place) {
        for (int value = 0; value < 256; ++value) {
            std::string bad = good;
            bad[place] = static_cast<char>(value);
            if (ReadMbFile(bad)) ++sizes;
        }
    }
    EXPECT_GT(sizes, 0);  // most bytes, such as those of the path, do not matter for the size
}
