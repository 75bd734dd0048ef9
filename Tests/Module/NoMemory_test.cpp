// The catalogue and INI functions while the system has no memory: for each of their allocations in turn, that
// one fails. The functions below stand in front of the system's own ones.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "Common/Export.h"
#include "Common/ini/IniObj.h"
#include "Common/ini/iniparser.h"
#include "Module/BackupLib/mbdb/mbdb.h"
#include "Tests/Module/BackupLib/mbdb/CatalogueBuilder.h"
#include "Tests/support/MemoryStream.h"
#include "Tests/support/TemporaryFolder.h"

namespace {

constexpr int kOff = -1;

/// Allocations of this thread that still succeed before one fails.
thread_local int g_left = kOff;

bool Refused() {
    if (g_left == kOff) return false;
    return g_left-- == 0;  // one fails, and then none
}

}  // namespace

// What the C library calls itself, which finding the real ones by dlsym would need already.
extern "C" {
void* __libc_malloc(size_t bytes);                // NOLINT(bugprone-reserved-identifier)
void* __libc_calloc(size_t count, size_t bytes);  // NOLINT(bugprone-reserved-identifier)

KRUTEIN_API void* malloc(size_t bytes) {
    return Refused() ? nullptr : __libc_malloc(bytes);
}

KRUTEIN_API void* calloc(size_t count, size_t bytes) {
    return Refused() ? nullptr : __libc_calloc(count, bytes);
}
}

namespace {

/// Lets the allocation behind the next `count` ones fail, while it lives.
class OneRefusal {
 public:
    explicit OneRefusal(int count) { g_left = count; }
    ~OneRefusal() { g_left = kOff; }
    OneRefusal(const OneRefusal&) = delete;
    OneRefusal& operator=(const OneRefusal&) = delete;

    static bool Came() { return g_left == kOff; }
};

/// Runs `work` again and again, each time with another of its allocations failing. `check` gets its result.
/// \return how many allocations there are.
template <typename Work, typename Check>
int RefuseEach(Work work, Check check) {
    for (int count = 0;; ++count) {
        bool came = false;
        auto result = [&] {
            const OneRefusal refusal(count);
            auto made = work();
            came = OneRefusal::Came();
            return made;
        }();
        check(result, came);
        if (!came) return count;
    }
}

int Quiet(const char* /*format*/, ...) {
    return 0;
}

class NoMemory : public testing::Test {
 protected:
    NoMemory() { iniparser_set_error_callback(Quiet); }
    ~NoMemory() override { iniparser_set_error_callback(nullptr); }

    static std::string Image() {
        MbdbRecordBytes record;
        record.target = "target";
        record.datahash = std::string(20, 'h');
        record.unknown1 = "u";
        record.properties = {{"name", "value"}, {"other", "text"}};
        return MbdbBytes({record, record, record});
    }

    TemporaryFolder folder;
};

}  // namespace

TEST_F(NoMemory, ParsingKeepsWhatCameBeforeOrGivesNothing) {
    std::string image = Image();
    const int allocations = RefuseEach(
        [&] {
            return mbdb_parse(reinterpret_cast<unsigned char*>(image.data()),
                              static_cast<unsigned>(image.size()));
        },
        [](mbdb_t* mbdb, bool refused) {
            if (mbdb != nullptr) {
                EXPECT_EQ(mbdb->records.size() < 3, refused);
            } else {
                EXPECT_TRUE(refused);
            }
            mbdb_free(mbdb);
        });
    EXPECT_GT(allocations, 30);
}

TEST_F(NoMemory, OpeningKeepsWhatCameBeforeOrGivesNothing) {
    const std::string path = folder.Write("Manifest.mbdb", Image());
    RefuseEach([&] { return mbdb_open(path.c_str()); },
               [](mbdb_t* mbdb, bool refused) {
                   EXPECT_TRUE(refused || (mbdb != nullptr && mbdb->records.size() == 3));
                   mbdb_free(mbdb);
               });
}

TEST_F(NoMemory, ACopyIsAppendedWholeOrNotAtAll) {
    const Mbdb mbdb = ParseMbdb(Image());
    std::size_t records = mbdb->records.size();
    RefuseEach([&] { return mbdb_insert_record(mbdb.get(), mbdb->records[0], MBDB_INSERT_COPY); },
               [&](const mbdb_record_t* copy, bool refused) {
                   EXPECT_TRUE(refused || copy != nullptr);
                   records += copy == nullptr ? 0U : 1U;
                   ASSERT_EQ(mbdb->records.size(), records);
                   EXPECT_STREQ(copy == nullptr ? "text" : copy->properties[1]->value, "text");
               });
}

TEST_F(NoMemory, SavingSaysSo) {
    const Mbdb mbdb = ParseMbdb(Image());
    const std::string path = folder.Path("saved");
    RefuseEach([&] { return mbdb_save(mbdb.get(), path.c_str()); },
               [&](bool saved, bool refused) {
                   EXPECT_TRUE(saved || refused);
                   EXPECT_TRUE(!saved || folder.Read("saved") == Image());
               });
}

TEST_F(NoMemory, AnEntryIsStoredOrNothingChanges) {
    const auto fill = [] {
        dictionary* const d = dictionary_new(0);
        for (int i = 0; i < 128; ++i)
            dictionary_set(d, ("key" + std::to_string(i)).c_str(), "value");
        return d;
    };
    for (const char* const key : {"new", "key7"}) {
        dictionary* d = fill();  // full: a new key makes it grow
        RefuseEach([&] { return dictionary_set(d, key, "other"); },
                   [&](int result, bool refused) {
                       EXPECT_TRUE(result == 0 || refused);
                       const char* const before = std::string("new") == key ? nullptr : "value";
                       EXPECT_STREQ(dictionary_get(d, key, nullptr), result == 0 ? "other" : before);
                       EXPECT_STREQ(dictionary_get(d, "key127", nullptr), "value");
                       dictionary_del(d);
                       d = fill();
                   });
        dictionary_del(d);
    }
}

TEST_F(NoMemory, ADictionaryIsThereOrNot) {
    RefuseEach([] { return dictionary_new(200); },
               [](dictionary* d, bool refused) {
                   EXPECT_TRUE(d != nullptr || refused);
                   dictionary_del(d);
               });
}

TEST_F(NoMemory, AFileIsReadAsFarAsThereIsMemory) {
    std::string text = "[s]\n";
    for (int i = 0; i < 200; ++i)
        text += "key" + std::to_string(i) + " = value\n";
    const std::string path = folder.Write("file.ini", text);
    RefuseEach([&] { return iniparser_load(path.c_str()); },
               [](dictionary* d, bool refused) {
                   EXPECT_TRUE(refused || (d != nullptr && d->n == 201));
                   for (int i = 0; d != nullptr && i < d->size; ++i) {
                       EXPECT_TRUE(d->val[i] == nullptr || std::string(d->val[i]) == "value");
                   }
                   iniparser_freedict(d);
               });
}

TEST_F(NoMemory, GroupingWritesEverythingOrNothing) {
    dictionary* const d = dictionary_new(0);
    for (const char* const key : {"b:a long name that a text must allocate for", "a:x", "a:y"})
        iniparser_set(d, key, "a value that is long enough not to lie in the text itself");
    const MemoryStream whole;
    iniparser_patch_dump_ini(d, whole.Stream());
    const std::string expected = whole.Text();
    for (int count = 0;; ++count) {
        const MemoryStream out;
        std::setvbuf(out.Stream(), nullptr, _IOFBF, 65536);  // written when the memory is back
        bool refused = false;
        {
            const OneRefusal refusal(count);
            iniparser_patch_dump_ini(d, out.Stream());
            refused = OneRefusal::Came();
        }
        EXPECT_THAT(out.Text(), testing::AnyOf(expected, refused ? "" : expected));
        if (!refused) break;
    }
    iniparser_freedict(d);
}
