#include "Module/BackupLib/mbdb/mbdb_record.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "Tests/Module/BackupLib/mbdb/CatalogueBuilder.h"

namespace {

class MbdbRecordTest : public testing::Test {
 protected:
    MbdbRecordTest() : record(mbdb_record_create(), mbdb_record_free) { mbdb_record_init(record.get()); }

    std::unique_ptr<mbdb_record_t, void (*)(mbdb_record_t*)> record;
};

}  // namespace

TEST(MbdbRecord, ACreatedOneIsAllZeros) {
    const std::unique_ptr<mbdb_record_t, void (*)(mbdb_record_t*)> record(mbdb_record_create(),
                                                                          mbdb_record_free);
    EXPECT_EQ(record->domain, nullptr);
    EXPECT_EQ(record->target_size, 0);
    EXPECT_EQ(record->record_size, 0U);
    EXPECT_EQ(record->properties, nullptr);
}

TEST(MbdbRecord, OneInMemoryIsDecoded) {
    std::string bytes = MbdbRecordBytes().Bytes();
    const std::unique_ptr<mbdb_record_t, void (*)(mbdb_record_t*)> record(
        mbdb_record_parse(reinterpret_cast<unsigned char*>(bytes.data())), mbdb_record_free);
    ASSERT_NE(record, nullptr);
    EXPECT_STREQ(record->path, "Library/some.file");
    EXPECT_EQ(record->record_size, bytes.size());
}

TEST_F(MbdbRecordTest, AnInitialisedOneIsEmpty) {
    EXPECT_EQ(record->domain_size, 0);
    EXPECT_EQ(record->path_size, 0);
    EXPECT_EQ(record->target_size, 0xFFFF);
    EXPECT_EQ(record->datahash_size, 0xFFFF);
    EXPECT_EQ(record->unknown1_size, 0xFFFF);
    EXPECT_EQ(record->record_size, 50U);
}

TEST_F(MbdbRecordTest, StringSettersKeepTheSizeInStep) {
    mbdb_record_set_domain(record.get(), "Domain");
    EXPECT_STREQ(record->domain, "Domain");
    EXPECT_EQ(record->domain_size, 6);
    EXPECT_EQ(record->record_size, 56U);
    mbdb_record_set_domain(record.get(), "D");
    EXPECT_EQ(record->record_size, 51U);
    mbdb_record_set_path(record.get(), "path");
    mbdb_record_set_target(record.get(), "target");
    mbdb_record_set_datahash(record.get(), std::string("\0\x01\x02", 3).c_str(), 3);
    mbdb_record_set_unknown1(record.get(), "ab", 2);
    EXPECT_EQ(record->record_size, 50U + 1 + 4 + 6 + 3 + 2);
    EXPECT_EQ(std::string(record->datahash, 3), std::string("\0\x01\x02", 3));
    EXPECT_EQ(record->unknown1_size, 2);
}

TEST_F(MbdbRecordTest, EmptyValuesAreStoredAsTheyAreWritten) {
    mbdb_record_set_domain(record.get(), "x");
    mbdb_record_set_path(record.get(), "x");
    mbdb_record_set_target(record.get(), "x");
    mbdb_record_set_datahash(record.get(), "x", 1);
    mbdb_record_set_unknown1(record.get(), "x", 1);
    mbdb_record_set_domain(record.get(), "");
    mbdb_record_set_path(record.get(), nullptr);
    mbdb_record_set_target(record.get(), "");
    mbdb_record_set_datahash(record.get(), "x", 0);
    mbdb_record_set_unknown1(record.get(), nullptr, 5);
    EXPECT_EQ(record->domain_size, 0);
    EXPECT_EQ(record->path_size, 0);
    EXPECT_EQ(record->target_size, 0xFFFF);
    EXPECT_EQ(record->datahash_size, 0xFFFF);
    EXPECT_EQ(record->unknown1_size, 0xFFFF);
    for (const char* value :
         {record->domain, record->path, record->target, record->datahash, record->unknown1}) {
        EXPECT_EQ(value, nullptr);
    }
    EXPECT_EQ(record->record_size, 50U);
}

TEST_F(MbdbRecordTest, AValueMayBeSetToItself) {
    mbdb_record_set_path(record.get(), "a/path");
    mbdb_record_set_path(record.get(), record->path);
    EXPECT_STREQ(record->path, "a/path");
    mbdb_record_set_path(record.get(), record->path + 2);
    EXPECT_STREQ(record->path, "path");
}

TEST_F(MbdbRecordTest, WhatIsTooLongForTheFileIsCut) {
    mbdb_record_set_path(record.get(), std::string(70000, 'p').c_str());
    EXPECT_EQ(record->path_size, 65534);
    EXPECT_EQ(std::string(record->path).size(), 65534U);
    mbdb_record_set_datahash(record.get(), std::string(65535, 'h').c_str(), 65535);
    EXPECT_EQ(record->datahash_size, 65534);
}

TEST_F(MbdbRecordTest, PlainSettersStore) {
    mbdb_record_set_mode(record.get(), 0x81A4);
    mbdb_record_set_unknown2(record.get(), 2);
    mbdb_record_set_inode(record.get(), 3);
    mbdb_record_set_uid(record.get(), 4);
    mbdb_record_set_gid(record.get(), 5);
    mbdb_record_set_time1(record.get(), 6);
    mbdb_record_set_time2(record.get(), 7);
    mbdb_record_set_time3(record.get(), 8);
    mbdb_record_set_length(record.get(), 0xFFFFFFFFFFFFFFFFULL);
    mbdb_record_set_flag(record.get(), 9);
    EXPECT_EQ(record->mode, 0x81A4);
    EXPECT_EQ(record->unknown2, 2U);
    EXPECT_EQ(record->inode, 3U);
    EXPECT_EQ(record->uid, 4U);
    EXPECT_EQ(record->gid, 5U);
    EXPECT_EQ(record->time1, 6U);
    EXPECT_EQ(record->time2, 7U);
    EXPECT_EQ(record->time3, 8U);
    EXPECT_EQ(record->length, 0xFFFFFFFFFFFFFFFFULL);
    EXPECT_EQ(record->flag, 9);
    EXPECT_EQ(record->record_size, 50U);
}

TEST(MbdbRecord, NullIsIgnored) {
    mbdb_record_free(nullptr);
    mbdb_record_init(nullptr);
    mbdb_record_debug(nullptr);
    mbdb_record_set_domain(nullptr, "x");
    mbdb_record_set_path(nullptr, "x");
    mbdb_record_set_target(nullptr, "x");
    mbdb_record_set_datahash(nullptr, "x", 1);
    mbdb_record_set_unknown1(nullptr, "x", 1);
    mbdb_record_set_mode(nullptr, 1);
    mbdb_record_set_unknown2(nullptr, 1);
    mbdb_record_set_inode(nullptr, 1);
    mbdb_record_set_uid(nullptr, 1);
    mbdb_record_set_gid(nullptr, 1);
    mbdb_record_set_time1(nullptr, 1);
    mbdb_record_set_time2(nullptr, 1);
    mbdb_record_set_time3(nullptr, 1);
    mbdb_record_set_length(nullptr, 1);
    mbdb_record_set_flag(nullptr, 1);
}

TEST_F(MbdbRecordTest, DebugPrintsALineForEachField) {
    mbdb_record_set_domain(record.get(), "D");
    mbdb_record_set_path(record.get(), "p");
    mbdb_record_set_unknown1(record.get(), "ab", 2);
    mbdb_record_set_datahash(record.get(), "x", 1);
    mbdb_record_set_mode(record.get(), 0x81A4);
    mbdb_record_set_uid(record.get(), 501);
    mbdb_record_set_gid(record.get(), 0xFFFFFFFF);
    mbdb_record_set_time3(record.get(), 255);
    mbdb_record_set_length(record.get(), 12345678901ULL);
    char hash[64];
    std::snprintf(hash, sizeof hash, "%p", static_cast<void*>(record->datahash));
    testing::internal::CaptureStdout();
    mbdb_record_debug(record.get());
    EXPECT_EQ(
        testing::internal::GetCapturedStdout(),
        "mbdb record\n\tdomain = D\n\tpath = p\n\ttarget = (null)\n\tdatahash = " + std::string(hash) +
            "\n\tunknown1 = ab\n\tmode = 0100644 (0x81a4)\n\tunknown2 = 0x0\n\tinode = 0x0\n\tuid = 501\n"
            "\tgid = -1\n\ttime1 = 0x0\n\ttime2 = 0x0\n\ttime3 = 0xff\n\tlength = 12345678901\n"
            "\tflag = 0x0\n\tproperty_count = 0\n");
}
