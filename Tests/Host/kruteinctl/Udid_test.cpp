#include "Host/kruteinctl/Udid.h"

#include <gtest/gtest.h>

#include "Host/kruteinctl/Failure.h"

TEST(Udid, TheOldFormIsLowerCase) {
    const std::string udid = "0123456789abcdef0123456789abcdef01234567";
    EXPECT_EQ(CanonicalUdid(udid), udid);
    EXPECT_EQ(CanonicalUdid("0123456789ABCDEF0123456789abcdef01234567"), udid);
}

TEST(Udid, TheNewFormIsUpperCaseWithADash) {
    const std::string udid = "00008110-000A2D3E1E08801E";
    for (const char* text : {"00008110-000A2D3E1E08801E", "00008110-000a2d3e1e08801e",
                             "00008110000A2D3E1E08801E", "00008110000a2d3e1E08801e"}) {
        EXPECT_EQ(CanonicalUdid(text), udid) << text;
    }
}

TEST(Udid, AnythingElseIsWrongUsage) {
    for (const char* text :
         {"", "x", "00008110", "0000811-0000A2D3E1E08801E", "00008110-000A2D3E1E08801",
          "00008110-000A2D3E1E08801EF", "00008110-000A2D3E1E08801G",
          "0123456789abcdef0123456789abcdef0123456", "../../etc", "-",
          "0123456789abcdef0123456789abcdef012345678", "01234567-89abcdef0123456789abcdef01234567",
          "00008110-000A2D3E1E08801E ", "00008110-000A2D3E1E08801E|x"}) {
        try {
            CanonicalUdid(text);
            ADD_FAILURE() << text;
        } catch (const Failure& failure) {
            EXPECT_EQ(failure.Code(), ExitCode::kUsage) << text;
        }
    }
}
