#include "Module/BackupLib/mbdb/mbdb.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>

#include "Tests/Module/BackupLib/mbdb/CatalogueBuilder.h"
#include "Tests/support/TemporaryFolder.h"

namespace {

/// What a function printed.
template <typename Function>
std::string Printed(Function function) {
    testing::internal::CaptureStdout();
    function();
    return testing::internal::GetCapturedStdout();
}

MbdbRecordBytes FullRecord() {
    MbdbRecordBytes record;
    record.target = "some/target";
    record.datahash = std::string("\x00\x80\xFFhash of twenty...", 20);
    record.unknown1 = "unknown";
    record.mode = 0xFFFE;
    record.unknown2 = 0x80000001;
    record.inode = 0xFFFFFFFF;
    record.length = 0xFEDCBA9876543210;
    record.flag = 0xFF;
    record.properties = {{"name", "value"}, {"", ""}, {"binary", std::string("\0\x01\xFF", 3)}};
    return record;
}

MbdbRecordBytes Named(const std::string& path) {
    MbdbRecordBytes record;
    record.path = path;
    return record;
}

Mbdb Open(const std::string& path) {
    return {mbdb_open(path.c_str()), mbdb_free};
}

std::string Saved(mbdb_t* mbdb, const TemporaryFolder& folder) {
    EXPECT_TRUE(mbdb_save(mbdb, folder.Path("saved").c_str()));
    return folder.Read("saved");
}

/// A record that was made with the setters.
mbdb_record_t* MadeRecord(const char* domain, const char* path) {
    mbdb_record_t* const record = mbdb_record_create();
    mbdb_record_init(record);
    mbdb_record_set_domain(record, domain);
    mbdb_record_set_path(record, path);
    return record;
}

Mbdb EmptyCatalogue() {
    return ParseMbdb(kMbdbHeader);
}

}  // namespace

TEST(MbdbParse, TakesAllFields) {
    const std::string bytes = MbdbBytes({FullRecord()});
    const Mbdb mbdb = ParseMbdb(bytes);
    ASSERT_NE(mbdb, nullptr);
    EXPECT_EQ(mbdb->size, bytes.size());
    EXPECT_EQ(std::string(reinterpret_cast<char*>(mbdb->data), mbdb->size), bytes);
    EXPECT_EQ(std::string(reinterpret_cast<char*>(mbdb->header), 6), kMbdbHeader);
    ASSERT_EQ(mbdb->records.size(), 1U);
    const mbdb_record_t& record = *mbdb->records[0];
    EXPECT_STREQ(record.domain, "HomeDomain");
    EXPECT_EQ(record.domain_size, 10);
    EXPECT_STREQ(record.path, "Library/some.file");
    EXPECT_STREQ(record.target, "some/target");
    EXPECT_EQ(std::string(record.datahash, record.datahash_size), *FullRecord().datahash);
    EXPECT_STREQ(record.unknown1, "unknown");
    EXPECT_EQ(record.mode, 0xFFFE);
    EXPECT_EQ(record.unknown2, 0x80000001U);
    EXPECT_EQ(record.inode, 0xFFFFFFFFU);
    EXPECT_EQ(record.uid, 501U);
    EXPECT_EQ(record.gid, 501U);
    EXPECT_EQ(record.time1, 1U);
    EXPECT_EQ(record.time2, 2U);
    EXPECT_EQ(record.time3, 3U);
    EXPECT_EQ(record.length, 0xFEDCBA9876543210U);
    EXPECT_EQ(record.flag, 0xFF);
    ASSERT_EQ(record.property_count, 3);
    EXPECT_STREQ(record.properties[0]->name, "name");
    EXPECT_STREQ(record.properties[0]->value, "value");
    EXPECT_STREQ(record.properties[1]->name, "") << "taken literally: present and empty";
    EXPECT_EQ(record.properties[2]->value_size, 3);
    EXPECT_EQ(record.record_size, bytes.size() - 6);
}

TEST(MbdbParse, BothMarksOfAnAbsentStringAreNull) {
    MbdbRecordBytes record;
    record.target = "";
    const Mbdb mbdb = ParseMbdb(MbdbBytes({record}));
    ASSERT_EQ(mbdb->records.size(), 1U);
    EXPECT_EQ(mbdb->records[0]->target, nullptr);
    EXPECT_EQ(mbdb->records[0]->target_size, 0);
    EXPECT_EQ(mbdb->records[0]->datahash, nullptr);
    EXPECT_EQ(mbdb->records[0]->datahash_size, 0xFFFF);
}

TEST(MbdbParse, AHeaderAloneIsAnEmptyCatalogue) {
    const Mbdb mbdb = EmptyCatalogue();
    ASSERT_NE(mbdb, nullptr);
    EXPECT_TRUE(mbdb->records.empty());
}

TEST(MbdbParse, AnotherHeaderIsNoCatalogue) {
    for (const std::string& bytes :
         {std::string("mbdb\x05\x01", 6), std::string("mbdc\x05\x00", 6), std::string("MBDB\x05\x00", 6),
          std::string("mbdb"), std::string("mbdb\x05"), std::string()}) {
        const std::string printed = Printed([&] { EXPECT_EQ(ParseMbdb(bytes), nullptr); });
        EXPECT_EQ(printed, "Unable to identify this filetype\n");
    }
    EXPECT_EQ(Printed([] { EXPECT_EQ(mbdb_parse(nullptr, 100), nullptr); }),
              "Unable to identify this filetype\n");
}

TEST(MbdbParse, ADamagedRecordEndsItAndThoseBeforeAreKept) {
    std::string bytes = MbdbBytes({Named("first"), Named("second")});
    const std::size_t offset = bytes.size();
    bytes += std::string("\x7F\xFF", 2) + "too short for its length";
    const std::string printed = Printed([&] {
        const Mbdb mbdb = ParseMbdb(bytes);
        ASSERT_NE(mbdb, nullptr);
        ASSERT_EQ(mbdb->records.size(), 2U);
        EXPECT_STREQ(mbdb->records[1]->path, "second");
    });
    char expected[64];
    std::snprintf(expected, sizeof expected, "Unable to parse record at offset 0x%zx!\n", offset);
    EXPECT_EQ(printed, expected);
}

TEST(MbdbParse, EveryPrefixKeepsTheWholeRecordsInIt) {
    const std::vector<MbdbRecordBytes> records = {FullRecord(), MbdbRecordBytes::Smallest(), Named("third")};
    const std::string bytes = MbdbBytes(records);
    std::vector<std::size_t> ends = {6};
    for (const MbdbRecordBytes& record : records)
        ends.push_back(ends.back() + record.Bytes().size());
    testing::internal::CaptureStdout();
    for (std::size_t length = 6; length <= bytes.size(); ++length) {
        std::size_t whole = 0;
        while (whole < records.size() && ends[whole + 1] <= length)
            ++whole;
        const Mbdb mbdb = ParseMbdb(bytes.substr(0, length));
        ASSERT_NE(mbdb, nullptr) << length;
        EXPECT_EQ(mbdb->records.size(), whole) << length;
    }
    testing::internal::GetCapturedStdout();
}

TEST(MbdbParse, EveryFlippedByteIsSurvived) {
    const std::string bytes = MbdbBytes({FullRecord(), Named("second")});
    const TemporaryFolder folder;
    testing::internal::CaptureStdout();
    for (std::size_t i = 6; i < bytes.size(); ++i) {
        for (const int flip : {0x01, 0x80, 0xFF}) {
            std::string damaged = bytes;
            damaged[i] = static_cast<char>(damaged[i] ^ flip);
            const Mbdb mbdb = ParseMbdb(damaged);
            ASSERT_NE(mbdb, nullptr);
            // What was understood is a prefix of the image, byte for byte.
            const std::string saved = Saved(mbdb.get(), folder);
            EXPECT_EQ(saved, damaged.substr(0, saved.size()));
        }
    }
    testing::internal::GetCapturedStdout();
}

TEST(MbdbOpen, GivesBackTheSameFileWhenSaved) {
    const TemporaryFolder folder;
    MbdbRecordBytes emptyTarget;
    emptyTarget.target = "";
    for (const std::vector<MbdbRecordBytes>& records : std::vector<std::vector<MbdbRecordBytes>>{
             {},
             {MbdbRecordBytes::Smallest()},
             {FullRecord(), emptyTarget, Named("Grüße/中文"), MbdbRecordBytes::Smallest()},
             std::vector<MbdbRecordBytes>(20000, FullRecord())}) {
        const std::string bytes = MbdbBytes(records);
        const Mbdb mbdb = Open(folder.Write("Manifest.mbdb", bytes));
        ASSERT_NE(mbdb, nullptr);
        ASSERT_EQ(mbdb->records.size(), records.size());
        EXPECT_TRUE(Saved(mbdb.get(), folder) == bytes);
    }
    EXPECT_EQ(MbdbRecordBytes::Smallest().Bytes().size(), 50U);
}

TEST(MbdbOpen, ARecordOfTheLargestSizeIsWrittenBack) {
    MbdbRecordBytes record;
    record.domain = record.path = record.target = record.datahash = record.unknown1 = std::string(65534, 'x');
    record.properties.assign(255, {std::string(65535, 'n'), std::string(65535, 'v')});
    const TemporaryFolder folder;
    const std::string bytes = MbdbBytes({Named("before"), record, Named("after")});
    const Mbdb mbdb = Open(folder.Write("Manifest.mbdb", bytes));
    ASSERT_NE(mbdb, nullptr);
    EXPECT_EQ(mbdb->records.size(), 3U);
    EXPECT_TRUE(Saved(mbdb.get(), folder) == bytes);
}

TEST(MbdbOpen, FailsForWhatIsNoCatalogue) {
    const TemporaryFolder folder;
    EXPECT_EQ(Printed([&] {
                  EXPECT_EQ(Open(folder.Path("none")), nullptr);
                  EXPECT_EQ(Open(folder.Write("empty")), nullptr);
                  EXPECT_EQ(Open(folder.Path()), nullptr);
                  EXPECT_EQ(mbdb_open(nullptr), nullptr);
              }),
              "")
        << "without a message";
    EXPECT_EQ(Printed([&] { EXPECT_EQ(Open(folder.Write("other", "no catalogue")), nullptr); }),
              "Unable to identify this filetype\nUnable to parse mbdb file\n");
    EXPECT_EQ(mbdb_openw(L"/tmp"), nullptr);
}

TEST(MbdbSave, OfAnyLengthIsTheInput) {
    const TemporaryFolder folder;
    // Around the size in which it is written, with records up to the longest, and several times as much.
    for (const std::size_t records : {15U, 16U, 17U, 100U}) {
        std::vector<MbdbRecordBytes> all(records, FullRecord());
        for (std::size_t i = 0; i < records; ++i) {
            all[i].path = std::to_string(i) + std::string(65'000, 'p');
            all[i].properties.assign(i % 16 == 7 ? 20 : 0, {"name", std::string(65'535, 'v')});
        }
        const std::string bytes = MbdbBytes(all);
        const Mbdb mbdb = ParseMbdb(bytes);
        ASSERT_EQ(mbdb->records.size(), records);
        EXPECT_TRUE(Saved(mbdb.get(), folder) == bytes) << records;
    }
}

TEST(MbdbSave, NeedsAHeader) {
    const TemporaryFolder folder;
    const Mbdb created(mbdb_create(), mbdb_free);
    ASSERT_NE(created, nullptr);
    EXPECT_EQ(created->header, nullptr);
    EXPECT_TRUE(created->records.empty());
    EXPECT_EQ(Printed([&] {
                  EXPECT_FALSE(mbdb_save(created.get(), folder.Path("a").c_str()));
                  EXPECT_FALSE(mbdb_save(nullptr, folder.Path("a").c_str()));
              }),
              "Unable to identify this filetype\nUnable to identify this filetype\n");
    EXPECT_FALSE(std::filesystem::exists(folder.Path("a")));
}

TEST(MbdbSave, ACreatedCatalogueCanBeGivenAHeader) {
    const TemporaryFolder folder;
    const Mbdb mbdb(mbdb_create(), mbdb_free);
    mbdb->header = static_cast<unsigned char*>(std::malloc(6));
    kMbdbHeader.copy(reinterpret_cast<char*>(mbdb->header), 6);
    EXPECT_EQ(Saved(mbdb.get(), folder), kMbdbHeader);
}

TEST(MbdbSave, FailsWhereNoFileCanBe) {
    const TemporaryFolder folder;
    const Mbdb mbdb = EmptyCatalogue();
    EXPECT_FALSE(mbdb_save(mbdb.get(), folder.Path("no/such").c_str()));
    EXPECT_FALSE(mbdb_save(mbdb.get(), nullptr));
}

TEST(MbdbInsert, AttachTakesTheRecordItself) {
    const Mbdb mbdb = EmptyCatalogue();
    mbdb_record_t* const record = MadeRecord("D", "p");
    EXPECT_EQ(mbdb_insert_record(mbdb.get(), record, MBDB_INSERT_ATTACH), nullptr)
        << "null is no failure here";
    ASSERT_EQ(mbdb->records.size(), 1U);
    EXPECT_EQ(mbdb->records[0], record);
}

TEST(MbdbInsert, OtherTypesAndNullAddNothing) {
    const Mbdb mbdb = EmptyCatalogue();
    const std::unique_ptr<mbdb_record_t, void (*)(mbdb_record_t*)> record(MadeRecord("D", "p"),
                                                                          mbdb_record_free);
    EXPECT_EQ(mbdb_insert_record(mbdb.get(), record.get(), static_cast<en_mbdb_insert_record_type>(2)),
              nullptr);
    EXPECT_EQ(mbdb_insert_record(mbdb.get(), nullptr, MBDB_INSERT_COPY), nullptr);
    EXPECT_EQ(mbdb_insert_record(nullptr, record.get(), MBDB_INSERT_COPY), nullptr);
    EXPECT_TRUE(mbdb->records.empty());
}

TEST(MbdbInsert, CopyIsDeepAndSavesTheSame) {
    const TemporaryFolder folder;
    MbdbRecordBytes bytes = FullRecord();
    bytes.datahash = "a hash without zeros";
    bytes.properties = {{"name", "value"}};
    const Mbdb from = ParseMbdb(MbdbBytes({bytes}));
    const Mbdb to = EmptyCatalogue();
    mbdb_record_t* const original = from->records[0];
    mbdb_record_t* const copy = mbdb_insert_record(to.get(), original, MBDB_INSERT_COPY);
    ASSERT_NE(copy, nullptr);
    EXPECT_EQ(to->records.back(), copy);
    EXPECT_NE(copy->domain, original->domain);
    EXPECT_NE(copy->datahash, original->datahash);
    EXPECT_NE(copy->properties, original->properties);
    EXPECT_NE(copy->properties[0], original->properties[0]);
    EXPECT_GT(copy->record_size, original->record_size) << "the texts are counted twice";
    EXPECT_EQ(Saved(to.get(), folder), MbdbBytes({bytes}));
}

TEST(MbdbInsert, CopyCutsAHashAtItsZeroByte) {
    MbdbRecordBytes bytes;
    bytes.datahash = std::string("abc\0def", 7);
    const Mbdb from = ParseMbdb(MbdbBytes({bytes}));
    const Mbdb to = EmptyCatalogue();
    const mbdb_record_t* const copy = mbdb_insert_record(to.get(), from->records[0], MBDB_INSERT_COPY);
    ASSERT_NE(copy, nullptr);
    EXPECT_EQ(copy->datahash_size, 3);
    EXPECT_STREQ(copy->datahash, "abc");
}

TEST(MbdbInsert, CopyOfAHashThatBeginsWithAZeroByteIsItsOwn) {
    const TemporaryFolder folder;
    const MbdbRecordBytes bytes = FullRecord();
    const Mbdb to = EmptyCatalogue();
    {
        const Mbdb from = ParseMbdb(MbdbBytes({bytes}));
        ASSERT_NE(mbdb_insert_record(to.get(), from->records[0], MBDB_INSERT_COPY), nullptr);
    }
    EXPECT_EQ(to->records[0]->datahash_size, 20);
    EXPECT_EQ(std::string(to->records[0]->datahash, 20), *bytes.datahash);
    Saved(to.get(), folder);
}

TEST(MbdbInsert, CopyOfAnEmptyTextIsItsOwn) {
    const Mbdb mbdb = EmptyCatalogue();
    mbdb_record_t* const record = MadeRecord(nullptr, nullptr);
    record->domain = mbdb_strdup("");
    mbdb_record_t* const copy = mbdb_insert_record(mbdb.get(), record, MBDB_INSERT_COPY);
    ASSERT_NE(copy, nullptr);
    EXPECT_NE(copy->domain, record->domain);
    EXPECT_STREQ(copy->domain, "");
    EXPECT_EQ(copy->path, nullptr);
    mbdb_record_free(record);
}

TEST(MbdbInsert, CopyOfBytesWithoutANulReadsNoFurther) {
    const Mbdb mbdb = EmptyCatalogue();
    mbdb_record_t* const record = MadeRecord("D", "p");
    mbdb_record_set_datahash(record, "12345678", 8);
    mbdb_record_set_unknown1(record, "87654321", 8);
    const mbdb_record_t* const copy = mbdb_insert_record(mbdb.get(), record, MBDB_INSERT_COPY);
    EXPECT_EQ(copy->datahash_size, 8);
    EXPECT_EQ(copy->unknown1_size, 8);
    mbdb_record_free(record);
}

TEST(MbdbInsert, CopyOfBinaryPropertiesIsCutAtTheirZeroBytes) {
    const Mbdb from = ParseMbdb(MbdbBytes({FullRecord()}));
    const Mbdb to = EmptyCatalogue();
    const mbdb_record_t* const copy = mbdb_insert_record(to.get(), from->records[0], MBDB_INSERT_COPY);
    ASSERT_EQ(copy->property_count, 3);
    EXPECT_STREQ(copy->properties[0]->value, "value");
    EXPECT_EQ(copy->properties[1]->name, nullptr);
    EXPECT_EQ(copy->properties[1]->name_size, 0);
    EXPECT_EQ(copy->properties[2]->value_size, 0) << "it begins with a zero byte";
}

TEST(MbdbRecordAccess, IsThroughTheRecordsOnly) {
    const Mbdb mbdb = ParseMbdb(MbdbBytes({FullRecord()}));
    EXPECT_EQ(mbdb_get_record(mbdb.get(), 0), nullptr);
}

TEST(MbdbFree, IgnoresNull) {
    mbdb_free(nullptr);
}

TEST(MbdbStrdup, Duplicates) {
    EXPECT_EQ(mbdb_strdup(nullptr), nullptr);
    const std::unique_ptr<char, void (*)(void*)> copy(mbdb_strdup("text"), std::free);
    EXPECT_STREQ(copy.get(), "text");
}
