#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <sstream>
#include <string>

#include "Host/ToolCodes.h"
#include "Tests/Host/Archiver/ArchiverTool.h"
#include "Tests/Host/Archiver/BackupReader.h"

namespace fs = std::filesystem;
using testing::AllOf;
using testing::HasSubstr;
using testing::StartsWith;

namespace {

class Info : public BothPhonesTest {
 protected:
    /// The text of the one message.
    std::string Text() const {
        const ToolRun run = Run(InfoCommand());
        EXPECT_TRUE(EndedWith(run, kToolDone));
        EXPECT_EQ(run.Progress().size(), 1U);
        return run.Progress().empty() ? "" : run.Progress()[0].text;
    }

    /// As a host reads it: from the only line with the word.
    static std::int64_t TotalIn(const std::string& text) {
        std::istringstream lines(text);
        std::string line;
        std::int64_t total = -1;
        while (std::getline(lines, line)) {
            if (line.find("Total") == std::string::npos) continue;
            EXPECT_EQ(total, -1) << "more than one line in: " << text;
            EXPECT_THAT(line, testing::MatchesRegex("Total size: [0-9]+ bytes"));
            total = std::stoll(line.substr(line.find(": ") + 2));
        }
        return total;
    }

    std::int64_t BytesOfBackup() const {
        std::int64_t bytes = 0;
        for (const auto& file : ReadTree(BackupPath()))
            bytes += static_cast<std::int64_t>(file.second.size());
        return bytes;
    }
};

}  // namespace

INSTANTIATE_TEST_SUITE_P(Phones, Info, BothPhones(), testing::PrintToStringParamName());

TEST_P(Info, DescribesTheDeviceWhenThereIsNoBackup) {
    const std::string text = Text();
    EXPECT_THAT(text, AllOf(HasSubstr("Device: Ännchen's 📱\n"), HasSubstr("iPhone14,5"),
                            HasSubstr(m_phone.systemVersion)));
    EXPECT_FALSE(fs::exists(Path("backups")));
}

TEST_P(Info, TellsBeforehandHowLargeTheBackupWillBe) {
    const std::int64_t foretold = TotalIn(Text());
    ASSERT_TRUE(EndedWith(BackUp(), kToolDone));
    EXPECT_GE(foretold, BytesOfBackup());
    EXPECT_LE(foretold, BytesOfBackup() * 105 / 100);
}

TEST_P(Info, TellsSoForDevicesOfAllKinds) {
    nlohmann::json description = Description();
    const nlohmann::json contents = description["contents"];
    for (const auto& section : contents.items()) {
        description["contents"] = {{section.key(), section.value()}};
        Connect(description);
        fs::remove_all(BackupPath());
        const std::int64_t foretold = TotalIn(Text());
        ASSERT_TRUE(EndedWith(BackUp(), kToolDone));
        EXPECT_GE(foretold, BytesOfBackup()) << section.key();
        EXPECT_LE(foretold, BytesOfBackup() * 105 / 100) << section.key();
    }
}

TEST_P(Info, DescribesTheFinishedBackup) {
    ASSERT_TRUE(EndedWith(BackUp(), kToolDone));
    // Whatever lies there counts.
    m_folder.Write("backups/" + std::string(kUdid) + "/more/file", std::string(12345, 'x'));
    const std::string text = Text();
    EXPECT_THAT(text, StartsWith("Backup of: Ännchen's 📱\n"));
    EXPECT_THAT(text,
                AllOf(HasSubstr("iPhone14,5"), HasSubstr(m_phone.systemVersion), HasSubstr("Made: 20"),
                      HasSubstr("Files in the backup: " + std::to_string(ReadTree(BackupPath()).size()))));
    EXPECT_EQ(TotalIn(text), BytesOfBackup());
}

TEST_P(Info, NeedsNoDeviceForAFinishedBackup) {
    ASSERT_TRUE(EndedWith(BackUp(), kToolDone));
    Disconnect(kUdid);
    EXPECT_EQ(TotalIn(Text()), BytesOfBackup());
}

TEST_P(Info, DescribesTheDeviceWhenTheBackupIsNotFinished) {
    ASSERT_TRUE(EndedWith(BackUp(), kToolDone));
    fs::remove(BackupPath("Status.plist"));
    EXPECT_THAT(Text(), StartsWith("Device: "));
    m_folder.Write("backups/" + std::string(kUdid) + "/Status.plist", "finished");
    EXPECT_THAT(Text(), StartsWith("Device: "));
}

TEST_P(Info, NeedsADeviceWithoutABackup) {
    Disconnect(kUdid);
    EXPECT_TRUE(EndedWith(Run(InfoCommand()), kToolNoDevice));
}

TEST_P(Info, DoesNotCountWhatLinksLeadTo) {
    ASSERT_TRUE(EndedWith(BackUp(), kToolDone));
    const std::int64_t bytes = TotalIn(Text());
    m_folder.Write("elsewhere/large", std::string(100'000, 'x'));
    fs::create_directory_symlink(Path("elsewhere"), BackupPath("link to a folder"));
    fs::create_symlink(Path("elsewhere/large"), BackupPath("link to a file"));
    EXPECT_EQ(TotalIn(Text()), bytes);
}

TEST_P(Info, HasOneTotalWhateverTheNameOfTheDevice) {
    nlohmann::json description = Description();
    description["name"] = "Total size: 5 bytes";
    Connect(description);
    EXPECT_GT(TotalIn(Text()), 1'000'000);
    ASSERT_TRUE(EndedWith(BackUp(), kToolDone));
    EXPECT_EQ(TotalIn(Text()), BytesOfBackup());

    std::string info = ReadWholeFile(BackupPath("Info.plist"));
    const std::size_t at = info.find("Total size");
    m_folder.Write("backups/" + std::string(kUdid) + "/Info.plist", info.insert(at, "x\n"));
    const std::string text = Text();
    EXPECT_EQ(TotalIn(text), BytesOfBackup());
    EXPECT_THAT(text, StartsWith("Backup of: x total size: 5 bytes\nProduct type: "));
}

TEST_P(Info, TakesAnInfoFileThatIsNone) {
    ASSERT_TRUE(EndedWith(BackUp(), kToolDone));
    std::string deep;
    for (int i = 0; i < 100'000; ++i)
        deep += "<array>";
    for (const std::string& content :
         {std::string(), std::string("nonsense"), "<plist>" + deep, deep.substr(0, 60'000)}) {
        m_folder.Write("backups/" + std::string(kUdid) + "/Info.plist", content);
        const std::string text = Text();
        EXPECT_THAT(text, StartsWith("Backup of: \n"));
        EXPECT_EQ(TotalIn(text), BytesOfBackup());
    }
}

TEST_P(Info, DoesNotLookForTheBackupElsewhere) {
    ASSERT_TRUE(EndedWith(BackUp(), kToolDone));
    fs::create_directories(Path("backups/sub"));
    std::string command = InfoCommand();
    command.replace(command.find("-source|"), sizeof kUdid + 7, "-source|sub/../" + std::string(kUdid));
    const ToolRun run = Run(command);
    ASSERT_TRUE(EndedWith(run, kToolDone));
    EXPECT_THAT(run.Progress()[0].text, StartsWith("Device: "));
}
