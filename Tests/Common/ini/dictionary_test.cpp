#include "Common/ini/dictionary.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "Tests/support/MemoryStream.h"

namespace {

using Dictionary = std::unique_ptr<dictionary, void (*)(dictionary*)>;

Dictionary New(std::size_t size = 0) {
    return {dictionary_new(size), dictionary_del};
}

std::string Dump(const dictionary* d) {
    const MemoryStream out;
    dictionary_dump(d, out.Stream());
    return out.Text();
}

/// The keys in the order of their slots, "-" for a free one, up to the last that is used.
std::string Slots(const dictionary& d) {
    std::string slots;
    for (int i = 0, used = 0; used < d.n; ++i) {
        slots += d.key[i] == nullptr ? "-" : d.key[i];
        if (d.key[i] != nullptr) ++used;
    }
    return slots;
}

}  // namespace

TEST(DictionaryHash, IsTheOneAtATimeHash) {
    EXPECT_EQ(dictionary_hash("abc"), 0xED131F5BU);
    EXPECT_EQ(dictionary_hash(""), 0U);
    EXPECT_EQ(dictionary_hash(nullptr), 0U);
}

TEST(DictionaryHash, TakesBytesAsSignedCharacters) {
    unsigned expected = static_cast<unsigned>(-61);  // 0xC3
    expected += expected << 10U;
    expected ^= expected >> 6U;
    expected += expected << 3U;
    expected ^= expected >> 11U;
    expected += expected << 15U;
    EXPECT_EQ(dictionary_hash("\xC3"), expected);
}

TEST(Dictionary, HasAtLeast128Slots) {
    EXPECT_EQ(New(0)->size, 128);
    EXPECT_EQ(New(127)->size, 128);
    EXPECT_EQ(New(129)->size, 129);
    EXPECT_EQ(New(0)->n, 0);
    EXPECT_EQ(dictionary_new(static_cast<std::size_t>(-1)), nullptr);
}

TEST(Dictionary, GivesWhatWasSet) {
    const Dictionary d = New();
    EXPECT_EQ(dictionary_set(d.get(), "a", "1"), 0);
    EXPECT_EQ(dictionary_set(d.get(), "b", nullptr), 0);
    EXPECT_STREQ(dictionary_get(d.get(), "a", "none"), "1");
    EXPECT_EQ(dictionary_get(d.get(), "b", "none"), nullptr) << "there, without a value";
    EXPECT_STREQ(dictionary_get(d.get(), "A", "none"), "none") << "keys are compared as they are";
    EXPECT_EQ(d->n, 2);
}

TEST(Dictionary, TheEmptyKeyIsAKey) {
    const Dictionary d = New();
    EXPECT_STREQ(dictionary_get(d.get(), "", "none"), "none");
    EXPECT_EQ(dictionary_set(d.get(), "", "x"), 0);
    EXPECT_STREQ(dictionary_get(d.get(), "", "none"), "x");
}

TEST(Dictionary, ReplacingKeepsTheSlotAndTheCount) {
    const Dictionary d = New();
    for (const char* key : {"a", "b", "c"})
        dictionary_set(d.get(), key, "1");
    EXPECT_EQ(dictionary_set(d.get(), "a", "2"), 0);
    EXPECT_EQ(dictionary_set(d.get(), "b", nullptr), 0);
    EXPECT_EQ(Slots(*d), "abc");
    EXPECT_EQ(d->n, 3);
    EXPECT_STREQ(d->val[0], "2");
    EXPECT_EQ(d->val[1], nullptr);
}

TEST(Dictionary, AValueMayReplaceItself) {
    const Dictionary d = New();
    dictionary_set(d.get(), "a", "value");
    EXPECT_EQ(dictionary_set(d.get(), "a", dictionary_get(d.get(), "a", nullptr)), 0);
    EXPECT_STREQ(dictionary_get(d.get(), "a", nullptr), "value");
}

TEST(Dictionary, ANewKeyTakesTheFirstFreeSlotFromTheCountOn) {
    const Dictionary d = New();
    for (const char* key : {"a", "b", "c", "d"})
        dictionary_set(d.get(), key, "1");
    dictionary_unset(d.get(), "a");
    dictionary_set(d.get(), "e", "1");
    EXPECT_EQ(Slots(*d), "-bcde") << "slot 3 is taken, slot 4 is free";
    dictionary_unset(d.get(), "c");
    dictionary_unset(d.get(), "d");
    dictionary_set(d.get(), "f", "1");
    EXPECT_EQ(Slots(*d), "-bf-e") << "the count is 2, slot 2 is free";
}

TEST(Dictionary, TheSearchForAFreeSlotWraps) {
    const Dictionary d = New();
    for (int i = 0; i < 128; ++i)
        dictionary_set(d.get(), std::to_string(i).c_str(), "1");
    dictionary_unset(d.get(), "5");
    dictionary_set(d.get(), "new", "1");
    EXPECT_STREQ(d->key[5], "new");
    EXPECT_EQ(d->size, 128);
}

TEST(Dictionary, DoublesOnThe129thEntry) {
    const Dictionary d = New();
    for (int i = 0; i < 128; ++i)
        ASSERT_EQ(dictionary_set(d.get(), std::to_string(i).c_str(), "1"), 0);
    EXPECT_EQ(d->size, 128);
    EXPECT_EQ(dictionary_set(d.get(), "128", "last"), 0);
    EXPECT_EQ(d->size, 256);
    EXPECT_EQ(d->n, 129);
    for (int i = 0; i < 128; ++i)
        EXPECT_STREQ(dictionary_get(d.get(), std::to_string(i).c_str(), nullptr), "1");
    EXPECT_STREQ(d->key[128], "128");
    EXPECT_EQ(d->hash[128], dictionary_hash("128"));
}

TEST(Dictionary, UnsetClearsTheSlot) {
    const Dictionary d = New();
    dictionary_set(d.get(), "a", "1");
    dictionary_unset(d.get(), "none");
    EXPECT_EQ(d->n, 1);
    dictionary_unset(d.get(), "a");
    EXPECT_EQ(d->n, 0);
    EXPECT_EQ(d->key[0], nullptr);
    EXPECT_EQ(d->val[0], nullptr);
    EXPECT_EQ(d->hash[0], 0U);
}

TEST(Dictionary, NullArgumentsAreRefused) {
    const Dictionary d = New();
    EXPECT_EQ(dictionary_set(nullptr, "a", "1"), -1);
    EXPECT_EQ(dictionary_set(d.get(), nullptr, "1"), -1);
    EXPECT_STREQ(dictionary_get(nullptr, "a", "def"), "def");
    EXPECT_STREQ(dictionary_get(d.get(), nullptr, "def"), "def");
    dictionary_unset(nullptr, "a");
    dictionary_unset(d.get(), nullptr);
    dictionary_del(nullptr);
    dictionary_dump(nullptr, stdout);
    dictionary_dump(d.get(), nullptr);
}

TEST(DictionaryDump, PrintsEachEntry) {
    const Dictionary d = New();
    EXPECT_EQ(Dump(d.get()), "empty dictionary\n");
    dictionary_set(d.get(), "a", "1");
    dictionary_set(d.get(), "a key of more than twenty", nullptr);
    EXPECT_EQ(Dump(d.get()), "                   a\t[1]\na key of more than twenty\t[UNDEF]\n");
}
