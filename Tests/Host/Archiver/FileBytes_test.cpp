#include "Host/Archiver/contents/FileBytes.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <string>

#include "Host/Archiver/contents/Random.h"

using krutein::FileBytes;
using krutein::Random;
using testing::EndsWith;
using testing::StartsWith;

namespace {

std::string ReadInPieces(FileBytes bytes, std::size_t piece) {
    std::string all;
    std::string buffer(piece, '\0');
    while (const std::size_t count = bytes.Read(buffer.data(), piece))
        all.append(buffer, 0, count);
    return all;
}

std::string All(FileBytes::Kind kind, std::int64_t size, std::uint64_t seed = 1) {
    return FileBytes(kind, size, seed).All();
}

}  // namespace

TEST(FileBytes, AreTheSameInPiecesOfAnySize) {
    for (const auto kind : {FileBytes::Kind::kData, FileBytes::Kind::kText, FileBytes::Kind::kPicture}) {
        const FileBytes bytes(kind, 1003, 42);
        const std::string all = FileBytes(bytes).All();
        ASSERT_EQ(all.size(), 1003U);
        for (const std::size_t piece : {1U, 3U, 7U, 8U, 9U, 64U, 1002U, 1003U, 5000U})
            EXPECT_EQ(ReadInPieces(bytes, piece), all) << piece;
    }
    EXPECT_EQ(ReadInPieces(FileBytes("some given text"), 4), "some given text");
}

TEST(FileBytes, AreTheSameOnEveryPlatform) {
    EXPECT_EQ(All(FileBytes::Kind::kText, 40, 7), "so sfcamhg. s.aeev  eesgab,w k nrclvg.i ");
    EXPECT_EQ(Random("seed").Hex(40), "de9748b01ff6cf404a8fa7c93b066562e98bf087");
}

TEST(FileBytes, DifferBySeed) {
    EXPECT_NE(All(FileBytes::Kind::kData, 100, 1), All(FileBytes::Kind::kData, 100, 2));
}

TEST(FileBytes, OfDataHaveAllValues) {
    const std::string data = All(FileBytes::Kind::kData, 10'000);
    EXPECT_EQ(std::set<char>(data.begin(), data.end()).size(), 256U);
}

TEST(FileBytes, OfTextCanBePrinted) {
    const std::string text = All(FileBytes::Kind::kText, 10'000);
    EXPECT_TRUE(
        std::all_of(text.begin(), text.end(), [](char c) { return c == '\n' || (c >= ' ' && c <= 'z'); }));
    EXPECT_GT(std::count(text.begin(), text.end(), '\n'), 10);
}

TEST(FileBytes, OfPicturesBeginAndEndLikeOnes) {
    const std::string picture = All(FileBytes::Kind::kPicture, 1000);
    EXPECT_THAT(picture, StartsWith(std::string("\xFF\xD8\xFF\xE0\x00\x10JFIF\x00", 11)));
    EXPECT_THAT(picture, EndsWith("\xFF\xD9"));
    EXPECT_EQ(All(FileBytes::Kind::kPicture, 3), "\xFF\xD8\xFF");
    EXPECT_EQ(All(FileBytes::Kind::kPicture, 0), "");
}

TEST(Random, MakesIdsOfTheWantedForm) {
    Random random("x");
    EXPECT_THAT(random.Uuid(),
                testing::MatchesRegex("[0-9A-F]{8}-[0-9A-F]{4}-[0-9A-F]{4}-[0-9A-F]{4}-[0-9A-F]{12}"));
    EXPECT_THAT(random.Hex(33), testing::MatchesRegex("[0-9a-f]{33}"));
    EXPECT_NE(random.Uuid(), random.Uuid());
}
