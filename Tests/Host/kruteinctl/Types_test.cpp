#include "Host/kruteinctl/Types.h"

#include <gtest/gtest.h>

#include "Host/kruteinctl/Failure.h"
#include "Module/BackupLib/BackupType.h"

TEST(Types, WordsAreBits) {
    EXPECT_EQ(ParseTypes("messages"), kBackupTypeSms);
    EXPECT_EQ(ParseTypes("contacts,wechat"), kBackupTypeContact | kBackupTypeWeChat);
    EXPECT_EQ(ParseTypes("whatsapp,whatsapp"), kBackupTypeWhatsApp);
    EXPECT_EQ(ParseTypes("full"), kBackupTypeFull);
}

TEST(Types, OtherWordsAreRefused) {
    for (const char* const words : {"", ",", "sms", "messages,", "messages, whatsapp", "full,messages",
                                    "Messages", "messages;wechat"}) {
        EXPECT_THROW(ParseTypes(words), Failure) << words;
    }
}

TEST(Types, BitsAreWords) {
    EXPECT_EQ(TypeWords(kBackupTypeSms | kBackupTypeWhatsApp), "messages, whatsapp");
    EXPECT_EQ(TypeWords(kBackupTypeFull), "full");
    EXPECT_EQ(TypeWords(kBackupTypeITunes), "full");
    EXPECT_EQ(TypeWords(kBackupTypeICloud), "64") << "what no word stands for";
}

TEST(Types, AllWordsMakeTheirBitsAgain) {
    for (int type = 1; type < 16; ++type) {
        std::string words = TypeWords(type * 2);
        for (std::size_t at = 0; (at = words.find(' ')) != std::string::npos;)
            words.erase(at, 1);
        EXPECT_EQ(ParseTypes(words), type * 2);
    }
}
