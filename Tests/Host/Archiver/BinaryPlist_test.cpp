#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <plist/plist.h>

#include <memory>
#include <string>

#include "Host/Archiver/BinaryPlistReader.h"
#include "Host/Archiver/BinaryPlistWriter.h"

using krutein::BinaryPlistReader;
using krutein::BinaryPlistWriter;
using testing::Optional;

namespace {

using Node = std::unique_ptr<void, void (*)(plist_t)>;

/// What another reader of the format makes of it.
Node Parse(const std::string& bytes) {
    plist_t node = nullptr;
    plist_from_bin(bytes.data(), static_cast<std::uint32_t>(bytes.size()), &node);
    EXPECT_NE(node, nullptr);
    return {node, &plist_free};
}

std::string TextIn(const std::string& bytes) {
    const Node node = Parse(bytes);
    const char* const text = plist_get_string_ptr(node.get(), nullptr);
    return text == nullptr ? "no text" : text;
}

std::uint64_t NumberIn(const std::string& bytes) {
    const Node node = Parse(bytes);
    std::uint64_t number = 0;
    plist_get_uint_val(node.get(), &number);
    return number;
}

std::string Sample() {
    BinaryPlistWriter writer;
    const auto list = writer.Array({writer.Text("first"), writer.Number(7)});
    return writer.Finish(writer.Dictionary({{"list", list},
                                            {"uid", writer.Uid(3)},
                                            {"large", writer.Number(1ULL << 40)},
                                            {"text", writer.Text("äöü")}}));
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
    }
    reader->Member(reader->Top(), "text");
}

}  // namespace

TEST(BinaryPlistWriter, WritesTextsThatOthersRead) {
    for (const std::string& text :
         {std::string(), std::string("a"), std::string(14, 'x'), std::string(15, 'x'), std::string(300, 'x'),
          std::string(70'000, 'x'), std::string("Straße"), std::string("备忘录 📎 x"),
          std::string("\U0010FFFF")}) {
        BinaryPlistWriter writer;
        EXPECT_EQ(TextIn(writer.Finish(writer.Text(text))), text);
    }
}

TEST(BinaryPlistWriter, PutsASignInPlaceOfBytesThatAreNoText) {
    for (const auto& [bytes, text] : {std::pair<std::string, std::string>("a\xFFz", "a\uFFFDz"),
                                      {"\xC3", "\uFFFD"},
                                      {"\xE5\xA4", "\uFFFD"},
                                      {"\xC3z", "\uFFFDz"}}) {
        BinaryPlistWriter writer;
        EXPECT_EQ(TextIn(writer.Finish(writer.Text(bytes))), text);
    }
}

TEST(BinaryPlistWriter, WritesNumbersThatOthersRead) {
    for (const std::uint64_t number : {0ULL, 1ULL, 255ULL, 256ULL, 65535ULL, 65536ULL, 4294967295ULL,
                                       4294967296ULL, 9223372036854775807ULL}) {
        BinaryPlistWriter writer;
        EXPECT_EQ(NumberIn(writer.Finish(writer.Number(number))), number);
    }
}

TEST(BinaryPlistWriter, WritesCollectionsThatOthersRead) {
    const Node root = Parse(Sample());
    const plist_t list = plist_dict_get_item(root.get(), "list");
    ASSERT_EQ(plist_array_get_size(list), 2U);
    EXPECT_STREQ(plist_get_string_ptr(plist_array_get_item(list, 0), nullptr), "first");
    std::uint64_t uid = 0;
    plist_get_uid_val(plist_dict_get_item(root.get(), "uid"), &uid);
    EXPECT_EQ(uid, 3U);
    EXPECT_STREQ(plist_get_string_ptr(plist_dict_get_item(root.get(), "text"), nullptr), "äöü");
}

TEST(BinaryPlistWriter, HasRoomFor256Objects) {
    BinaryPlistWriter writer;
    for (int i = 0; i < 256; ++i)
        writer.Number(1);
    EXPECT_THROW(writer.Number(1), std::length_error);
}

TEST(BinaryPlistReader, FindsWhatTheWriterWrote) {
    const std::string bytes = Sample();
    const auto reader = BinaryPlistReader::Open(bytes);
    ASSERT_TRUE(reader.has_value());
    const auto list = reader->Member(reader->Top(), "list");
    ASSERT_TRUE(list.has_value());
    EXPECT_THAT(reader->Text(reader->Element(*list, 0).value()), Optional(std::string_view("first")));
    EXPECT_THAT(reader->Number(reader->Element(*list, 1).value()), Optional(7));
    EXPECT_EQ(reader->Element(*list, 2), std::nullopt);
    EXPECT_THAT(reader->Number(reader->Member(reader->Top(), "large").value()), Optional(1LL << 40));
    EXPECT_THAT(reader->Uid(reader->Member(reader->Top(), "uid").value()), Optional(3U));
    EXPECT_EQ(reader->Member(reader->Top(), "missing"), std::nullopt);
    EXPECT_EQ(reader->Member(*list, "first"), std::nullopt);
    EXPECT_EQ(reader->Number(*list), std::nullopt);
    EXPECT_EQ(reader->Text(*list), std::nullopt);
    EXPECT_EQ(reader->Text(1000), std::nullopt);
}

TEST(BinaryPlistReader, TakesNumbersThatHaveASignForNone) {
    BinaryPlistWriter writer;
    const std::string bytes = writer.Finish(writer.Number(0xFFFFFFFFFFFFFFFFULL));
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
