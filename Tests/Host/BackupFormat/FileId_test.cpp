#include "Host/BackupFormat/FileId.h"

#include <gtest/gtest.h>

#include "Tests/support/BackupBuilder.h"

using krutein::BackupLayout;
using krutein::FileId;

namespace {

constexpr char kMessages[] = "3d0d7e5fb2ce288813306e4d4636395e047a3d28";

}  // namespace

TEST(FileId, IsFortyHexadecimalDigitsOfAnyCase) {
    ASSERT_TRUE(FileId::Parse(kMessages));
    EXPECT_EQ(FileId::Parse(kMessages)->Text(), kMessages);
    EXPECT_EQ(FileId::Parse("3D0D7E5FB2CE288813306e4d4636395e047a3d28"), FileId::Parse(kMessages));
}

TEST(FileId, NothingElseIsOne) {
    const std::string good = kMessages;
    for (const std::string& bad :
         {std::string(), good.substr(1), good + "0", std::string("../") + good.substr(3),
          " " + good.substr(1), good.substr(1) + "g", good.substr(1) + "/", good.substr(1) + '\0',
          std::string(40, '.'), std::string(40, '\xC3')}) {
        EXPECT_FALSE(FileId::Parse(bad)) << bad;
    }
}

TEST(FileId, IsMadeOfDomainAndPath) {
    EXPECT_EQ(FileId::Of("HomeDomain", "Library/SMS/sms.db").Text(), kMessages);
    EXPECT_EQ(FileId::Of("Dömäin", "päth/图片").Text(), BackupBuilder::FileID("Dömäin", "päth/图片"));
    EXPECT_EQ(FileId::Of("", "").Text(), BackupBuilder::FileID("", ""));
}

TEST(FileId, HasItsPlaceInBothLayouts) {
    const FileId id = *FileId::Parse(kMessages);
    EXPECT_EQ(id.PlaceIn(BackupLayout::kNewer), std::string("3d/") + kMessages);
    EXPECT_EQ(id.PlaceIn(BackupLayout::kOlder), kMessages);
}
