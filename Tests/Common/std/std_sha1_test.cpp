#include "Common/std/std_sha1.h"

#include <gtest/gtest.h>

#include <memory>

#include "Tests/support/TemporaryFolder.h"

namespace {

constexpr char kOfNothing[] = "da39a3ee5e6b4b0d3255bfef95601890afd80709";
constexpr char kOfAbc[] = "a9993e364706816aba3e25717850c26c9cd0d89d";

/// Takes the array over.
std::string Hex(void* digest, int length) {
    const std::unique_ptr<unsigned char[]> bytes(static_cast<unsigned char*>(digest));
    std::string hex;
    for (int i = 0; i < length; ++i) {
        char two[3];
        std::snprintf(two, sizeof two, "%02x", static_cast<unsigned>(bytes[static_cast<std::size_t>(i)]));
        hex += two;
    }
    return hex;
}

}  // namespace

TEST(Sha1, OfTexts) {
    EXPECT_EQ(STD_FILE_CalcStringSha1A(""), kOfNothing);
    EXPECT_EQ(STD_FILE_CalcStringSha1A("abc"), kOfAbc);
    EXPECT_EQ(STD_FILE_CalcStringSha1A(std::string("\0", 1)), "5ba93c9db0cff93f52b521d7420e43f6eda2784f");
}

TEST(Sha1, OfMemoryHandsOutTheDigest) {
    void* digest = nullptr;
    int length = 0;
    EXPECT_EQ(STD_FILE_CalcSha1A("abc", 3, &digest, &length), kOfAbc);
    EXPECT_EQ(length, 20);
    EXPECT_EQ(Hex(digest, length), kOfAbc);
}

TEST(Sha1, LengthIsWrittenOnlyTogetherWithTheDigest) {
    int length = 7;
    EXPECT_EQ(STD_FILE_CalcSha1A("abc", 3, nullptr, &length), kOfAbc);
    EXPECT_EQ(length, 7);
    void* digest = nullptr;
    EXPECT_EQ(STD_FILE_CalcSha1A("abc", 3, &digest, nullptr), kOfAbc);
    EXPECT_EQ(Hex(digest, 20), kOfAbc);
}

TEST(Sha1, NoBytesAreNoBytes) {
    EXPECT_EQ(STD_FILE_CalcSha1A(nullptr, 5), kOfNothing);
    EXPECT_EQ(STD_FILE_CalcSha1A("abc", 0), kOfNothing);
    EXPECT_EQ(STD_FILE_CalcSha1A("abc", -1), kOfNothing);
}

TEST(Sha1, WideFormGivesTheDigestButNoText) {
    void* digest = nullptr;
    int length = 0;
    EXPECT_EQ(STD_FILE_CalcSha1W("abc", 3, &digest, &length), L"");
    EXPECT_EQ(Hex(digest, length), kOfAbc);
}

TEST(FileId, IsTheHashOfDomainDashPath) {
    EXPECT_EQ(STD_FILE_CalcDomainPathSha1A("HomeDomain", "Library/SMS/sms.db"),
              "3d0d7e5fb2ce288813306e4d4636395e047a3d28");
    EXPECT_EQ(STD_FILE_CalcDomainPathSha1A("", ""), "3bc15c8aae3e4124dd409035f32ea2fd6835efc9");
    for (const char* domain : {"", "D", "Some\\Domain", "\xC3\xA9"}) {
        for (const char* path : {"", "p", "a//B", "-"}) {
            EXPECT_EQ(STD_FILE_CalcDomainPathSha1A(domain, path),
                      STD_FILE_CalcStringSha1A(std::string(domain) + "-" + path));
        }
    }
}

TEST(FileSha1, HashesTheWholeFile) {
    const TemporaryFolder folder;
    folder.Write("d/abc", "abc");
    void* digest = nullptr;
    int length = 0;
    ASSERT_TRUE(STD_FILE_CalcFileSha1A(folder.Path() + "\\d\\abc", digest, length));
    EXPECT_EQ(Hex(digest, length), kOfAbc);
}

TEST(FileSha1, OfLargeFilesIsThatOfTheirBytes) {
    const TemporaryFolder folder;
    constexpr std::size_t kMiB = std::size_t{1024} * 1024;
    for (const std::size_t size : {8 * kMiB - 1, 8 * kMiB, 8 * kMiB + 1, 25 * kMiB}) {
        std::string content(size, '\0');
        for (std::size_t i = 0; i < size; ++i)
            content[i] = static_cast<char>(i * 7 + i / kMiB);
        void* digest = nullptr;
        int length = 0;
        ASSERT_TRUE(STD_FILE_CalcFileSha1A(folder.Write("large", content), digest, length)) << size;
        EXPECT_EQ(Hex(digest, length), STD_FILE_CalcStringSha1A(content)) << size;
    }
}

TEST(FileSha1, LeavesTheOutputsAloneWhenThereIsNothingToHash) {
    const TemporaryFolder folder;
    for (const std::string& path : {folder.Path("none"), folder.Write("empty"), folder.Path()}) {
        void* digest = nullptr;
        int length = 7;
        EXPECT_FALSE(STD_FILE_CalcFileSha1A(path, digest, length)) << path;
        EXPECT_EQ(digest, nullptr);
        EXPECT_EQ(length, 7);
    }
    void* digest = nullptr;
    int length = 7;
    EXPECT_FALSE(STD_FILE_CalcFileSha1W(L"/etc/passwd", digest, length));
    EXPECT_EQ(digest, nullptr);
    EXPECT_EQ(length, 7);
}
