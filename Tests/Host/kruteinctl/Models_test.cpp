#include "Host/kruteinctl/Models.h"

#include <gtest/gtest.h>

TEST(Models, HaveTheirNames) {
    EXPECT_EQ(MarketingName("iPhone14,5"), "iPhone 13");
    EXPECT_EQ(MarketingName("iPhone5,2"), "iPhone 5");
    EXPECT_EQ(ModelWords("iPhone14,5"), "iPhone 13 (iPhone14,5)");
}

TEST(Models, MayBeUnknown) {
    for (const char* type : {"iPhone99,1", "", "iPhone14", "iphone14,5", "iPhone14,55"}) {
        EXPECT_EQ(MarketingName(type), "");
        EXPECT_EQ(ModelWords(type), type);
    }
}
