// Damage to the catalogue of devices up to version 9, at each of its bytes.

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

#include "Common/std/std_sha1.h"
#include "Host/Archiver/ManifestMbdb.h"
#include "Host/Archiver/ToolError.h"
#include "Tests/support/TemporaryFolder.h"

using namespace krutein;

namespace {

CatalogueEntry Entry(EntryKind kind, const std::string& path, std::int64_t size = 0) {
    CatalogueEntry entry;
    entry.kind = kind;
    entry.domain = "HomeDomain";
    entry.path = path;
    entry.fileId = STD_FILE_CalcDomainPathSha1A(entry.domain, path);
    entry.size = size;
    if (kind == EntryKind::kLink) entry.linkTarget = "/elsewhere";
    return entry;
}

class ManifestMbdbReaderTest : public testing::Test {
 protected:
    ManifestMbdbReaderTest() {
        ManifestMbdbWriter writer(m_path);
        for (const CatalogueEntry& entry :
             {Entry(EntryKind::kFolder, ""), Entry(EntryKind::kFolder, "Library"),
              Entry(EntryKind::kFile, "Library/a", 5), Entry(EntryKind::kFolder, "Library"),
              Entry(EntryKind::kLink, "Library/link"), Entry(EntryKind::kFile, "Library/ü", 0)}) {
            writer.Add(entry);
        }
        m_written = writer.Finish();
        m_bytes = m_folder.Read("Manifest.mbdb");
    }

    /// The paths of the files that a catalogue with these bytes lists.
    /// \throws ToolError
    std::vector<std::string> Read(const std::string& bytes) const {
        m_folder.Write("Manifest.mbdb", bytes);
        ManifestMbdbReader reader(m_path, Selection::kAllFiles);
        const int count = reader.CountFiles();
        std::vector<std::string> paths;
        CatalogueEntry entry;
        while (reader.NextFile(entry)) {
            EXPECT_EQ(entry.fileId, STD_FILE_CalcDomainPathSha1A(entry.domain, entry.path));
            EXPECT_GE(entry.size, 0);
            paths.push_back(entry.path);
        }
        EXPECT_EQ(static_cast<int>(paths.size()), count);
        return paths;
    }

    /// \return false when they are damaged.
    bool CanRead(const std::string& bytes) const {
        try {
            Read(bytes);
            return true;
        } catch (const ToolError& error) {
            EXPECT_EQ(error.Code(), kToolBackupDamaged) << error.what();
            return false;
        }
    }

    TemporaryFolder m_folder;
    std::string m_path = m_folder.Path("Manifest.mbdb");
    std::int64_t m_written = 0;
    std::string m_bytes;
};

}  // namespace

TEST_F(ManifestMbdbReaderTest, ReadsWhatWasWritten) {
    EXPECT_EQ(m_written, static_cast<std::int64_t>(m_bytes.size()));
    EXPECT_EQ(Read(m_bytes), (std::vector<std::string>{"Library/a", "Library/ü"}));
}

TEST_F(ManifestMbdbReaderTest, NoticesEveryCutButThoseBetweenTwoRecords) {
    // 50 bytes, and the texts: domain, path, link target.
    std::set<std::size_t> ends{6};
    for (const unsigned texts : {10U, 17U, 19U, 32U, 20U})
        ends.insert(*ends.rbegin() + 50 + texts);
    ASSERT_EQ(*ends.rbegin(), m_bytes.size());
    for (std::size_t left = 0; left <= m_bytes.size(); ++left)
        EXPECT_EQ(CanRead(m_bytes.substr(0, left)), ends.count(left) == 1) << left << " bytes";
}

TEST_F(ManifestMbdbReaderTest, TakesAnyChangeOfAnyByteOrCallsItDamaged) {
    int damaged = 0;
    for (std::size_t at = 0; at < m_bytes.size(); ++at) {
        for (const unsigned mask : {0x01U, 0x80U, 0xFFU}) {
            std::string changed = m_bytes;
            changed[at] = static_cast<char>(static_cast<unsigned char>(changed[at]) ^ mask);
            if (!CanRead(changed)) ++damaged;
        }
    }
    // At the least each byte of the header and the lengths of texts.
    EXPECT_GT(damaged, 3 * 6 + 3 * 5 * 2);
}

TEST_F(ManifestMbdbReaderTest, RefusesToCutATextThatIsTooLong) {
    ManifestMbdbWriter writer("");
    writer.Add(Entry(EntryKind::kFile, std::string(65'534, 'x')));
    EXPECT_THROW(writer.Add(Entry(EntryKind::kFile, std::string(65'535, 'x'))), ToolError);
    EXPECT_EQ(writer.Finish(), 6 + 50 + 10 + 65'534);
}

TEST_F(ManifestMbdbReaderTest, IsNotWrittenOverAnything) {
    ManifestMbdbWriter writer(m_path);
    EXPECT_THROW(writer.Finish(), ToolError);
    EXPECT_EQ(m_folder.Read("Manifest.mbdb"), m_bytes);
}

TEST_F(ManifestMbdbReaderTest, IsNotThereWithoutAnEnd) {
    { ManifestMbdbWriter(m_folder.Path("other")).Add(Entry(EntryKind::kFolder, "")); }
    EXPECT_THROW(ManifestMbdbReader(m_folder.Path("other"), Selection::kAllFiles), ToolError);
}
