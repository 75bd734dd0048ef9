#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <plist/plist.h>

#include <memory>
#include <string>

#include "Host/BackupFormat/BinaryPlistReader.h"

using krutein::BinaryPlistReader;
using testing::Optional;

namespace {

/// As libplist writes it.
std::string Binary(plist_t node) {
    char* bytes = nullptr;
    std::uint32_t count = 0;
    plist_to_bin(node, &bytes, &count);
    plist_free(node);
    const std::unique_ptr<char, void (*)(char*)> owned(bytes, &plist_to_bin_free);
    return {bytes, count};
}

std::string Sample() {
    plist_t const list = plist_new_array();
    plist_array_append_item(list, plist_new_string("first"));
    plist_array_append_item(list, plist_new_uint(7));
    plist_t const root = plist_new_dict();
    plist_dict_set_item(root, "list", list);
    plist_dict_set_item(root, "uid", plist_new_uid(3));
    plist_dict_set_item(root, "large", plist_new_uint(1ULL << 40));
    plist_dict_set_item(root, "long", plist_new_string(std::string(300, 'x').c_str()));
    plist_dict_set_item(root, "text", plist_new_string("äöü"));
    return Binary(root);
}

/// Asks for everything there could be.
void ReadAll(const std::string& bytes) {
    const auto reader = BinaryPlistReader::Open(bytes);
    if (!reader) return;
    for (BinaryPlistReader::Object object = 0; object < 20; ++object) {
        reader->Member(object, "text");
        reader->Element(object, 1);
        reader->Uid(object);
        reader->Number(object);
        reader->Text(object);
        reader->Bool(object);
    }
    reader->Member(reader->Top(), "text");
}

}  // namespace

TEST(BinaryPlistReader, FindsWhatLibplistWrote) {
    const std::string bytes = Sample();
    const auto reader = BinaryPlistReader::Open(bytes);
    ASSERT_TRUE(reader.has_value());
    const auto list = reader->Member(reader->Top(), "list");
    ASSERT_TRUE(list.has_value());
    EXPECT_THAT(reader->Text(reader->Element(*list, 0).value()), Optional(std::string_view("first")));
    EXPECT_THAT(reader->Number(reader->Element(*list, 1).value()), Optional(7));
    EXPECT_EQ(reader->Element(*list, 2), std::nullopt);
    EXPECT_THAT(reader->Number(reader->Member(reader->Top(), "large").value()), Optional(1LL << 40));
    EXPECT_THAT(reader->Text(reader->Member(reader->Top(), "long").value()), Optional(std::string(300, 'x')));
    EXPECT_THAT(reader->Uid(reader->Member(reader->Top(), "uid").value()), Optional(3U));
    EXPECT_EQ(reader->Member(reader->Top(), "missing"), std::nullopt);
    EXPECT_EQ(reader->Member(*list, "first"), std::nullopt);
    EXPECT_EQ(reader->Number(*list), std::nullopt);
    EXPECT_EQ(reader->Text(*list), std::nullopt);
    EXPECT_EQ(reader->Text(1000), std::nullopt);
}

TEST(BinaryPlistReader, TellsTrueFromFalseAndFromAllElse) {
    for (const bool value : {true, false}) {
        const std::string bytes = Binary(plist_new_bool(value ? 1 : 0));
        const auto reader = BinaryPlistReader::Open(bytes);
        ASSERT_TRUE(reader.has_value());
        EXPECT_THAT(reader->Bool(reader->Top()), Optional(value));
    }
    const std::string bytes = Sample();
    const auto reader = BinaryPlistReader::Open(bytes);
    EXPECT_EQ(reader->Bool(reader->Top()), std::nullopt);
    EXPECT_EQ(reader->Bool(reader->Member(reader->Top(), "large").value()), std::nullopt);
}

TEST(BinaryPlistReader, HasNoNumbersOf64BitsAndMore) {
    const std::string bytes = Binary(plist_new_uint(~0ULL));
    const auto reader = BinaryPlistReader::Open(bytes);
    ASSERT_TRUE(reader.has_value());
    EXPECT_EQ(reader->Number(reader->Top()), std::nullopt);
}

TEST(BinaryPlistReader, SurvivesAnyChangedByte) {
    const std::string good = Sample();
    for (std::size_t place = 0; place < good.size(); ++place) {
        for (int value = 0; value < 256; ++value) {
            std::string bad = good;
            bad[place] = static_cast<char>(value);
            ReadAll(bad);
        }
    }
}

TEST(BinaryPlistReader, SurvivesAnyCut) {
    const std::string good = Sample();
    for (std::size_t size = 0; size < good.size(); ++size) {
        ReadAll(good.substr(0, size));
        ReadAll(good.substr(size));
        // Cut in the middle, with a trailer that knows nothing of it.
        ReadAll(good.substr(0, size / 2) +
                good.substr(good.size() - std::min<std::size_t>(good.size(), 32 + size / 2)));
    }
}

TEST(BinaryPlistReader, DoesNotFollowDeepOrEndlessNesting) {
    // Each array holds the next one twice, and the last one the first: a tree of it would have no end.
    std::string bytes = "bplist00";
    constexpr int kArrays = 100;
    for (int i = 0; i < kArrays; ++i) {
        const char next = static_cast<char>((i + 1) % kArrays);
        bytes += std::string("\xA2") + next + next;
    }
    const std::size_t offsets = bytes.size();
    for (int i = 0; i < kArrays; ++i)
        bytes.append({static_cast<char>((8 + 3 * i) >> 8), static_cast<char>(8 + 3 * i)});
    bytes += std::string("\0\0\0\0\0\0\2\1", 8);
    for (const std::size_t number : {std::size_t{kArrays}, std::size_t{0}, offsets}) {
        for (int shift = 56; shift >= 0; shift -= 8)
            bytes.push_back(static_cast<char>(number >> shift));
    }
    const auto reader = BinaryPlistReader::Open(bytes);
    ASSERT_TRUE(reader.has_value());
    EXPECT_THAT(reader->Element(0, 1), Optional(1U));
    EXPECT_THAT(reader->Element(99, 0), Optional(0U));
    EXPECT_EQ(reader->Member(0, "x"), std::nullopt);
}
