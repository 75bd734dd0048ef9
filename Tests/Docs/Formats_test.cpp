// What Docs/formats.md says is what the code does.

#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <memory>
#include <regex>
#include <sstream>

#include "Common/std/std_sha1.h"
#include "Host/ToolCodes.h"
#include "Host/kruteinctl/ExitCode.h"
#include "Module/BackupLib/BackupMgr.h"
#include "Module/BackupLib/MobileBackupTask.h"
#include "Module/BackupLib/PipeMessage.h"
#include "Module/BackupLib/mbdb/mbdb.h"
#include "Module/Sync/SyncFactory.h"
#include "Tests/support/TemporaryFolder.h"

using testing::HasSubstr;

namespace {

const std::string& Text() {
    static const std::string text = ReadWholeFile(DOCS_FOLDER "/formats.md");
    return text;
}

std::string Section(const std::string& heading) {
    const std::size_t begin = Text().find("\n## " + heading + "\n");
    EXPECT_NE(begin, std::string::npos) << heading;
    return Text().substr(begin, Text().find("\n## ", begin + 1) - begin);
}

/// The bytes of a block ```hex name: 16 pairs a line, then the same as text.
std::string Dump(const std::string& name) {
    const std::string mark = "```hex " + name + "\n";
    const std::size_t begin = Text().find(mark);
    EXPECT_NE(begin, std::string::npos) << name;
    std::istringstream lines(Text().substr(begin + mark.size()));
    std::string bytes;
    for (std::string line; std::getline(lines, line) && line != "```";) {
        std::string shown;
        std::istringstream pairs(line.substr(0, 48));
        for (std::string pair; pairs >> pair;)
            shown.push_back(static_cast<char>(std::stoi(pair, nullptr, 16)));
        bytes += shown;
        for (char& c : shown)
            c = c >= ' ' && c <= '~' ? c : '.';
        EXPECT_EQ(line.substr(50), shown);
    }
    return bytes;
}

/// The numbers in the first column of a section's tables.
std::vector<int> Codes(const std::string& section) {
    static const std::regex row("\n\\| (\\d+) \\|");
    std::vector<int> codes;
    for (std::sregex_iterator at(section.begin(), section.end(), row), end; at != end; ++at)
        codes.push_back(std::stoi((*at)[1]));
    return codes;
}

}  // namespace

TEST(Formats, TheProgressMessage) {
    const std::string bytes = Dump("progress");
    krutein::PipeMessageHeader header{};
    ASSERT_GT(bytes.size(), sizeof header);
    std::memcpy(&header, bytes.data(), sizeof header);
    EXPECT_EQ(header.type, krutein::kPipeProgress);
    EXPECT_EQ(header.arg1, 3);
    EXPECT_EQ(header.arg2, 2013);
    EXPECT_EQ(static_cast<std::size_t>(header.length), bytes.size() - sizeof header);
    EXPECT_EQ(bytes.substr(sizeof header), std::string("HomeDomain/Library/SMS/sms.db\0", 30));
}

TEST(Formats, TheCatalogue) {
    std::string bytes = Dump("mbdb");
    const std::unique_ptr<mbdb_t, void (*)(mbdb_t*)> catalogue(
        mbdb_parse(reinterpret_cast<unsigned char*>(bytes.data()), static_cast<unsigned>(bytes.size())),
        &mbdb_free);
    ASSERT_NE(catalogue, nullptr);
    ASSERT_EQ(catalogue->records.size(), 1U);
    const mbdb_record_t& record = *catalogue->records.front();
    EXPECT_STREQ(record.domain, "HomeDomain");
    EXPECT_STREQ(record.path, "Library/SMS/sms.db");
    EXPECT_EQ(record.target_size, 0xFFFF);
    EXPECT_EQ(record.mode, 0100644);
    EXPECT_EQ(record.length, 45056U);
    EXPECT_EQ(6 + record.record_size, bytes.size());
    EXPECT_THAT(Section("A backup"), HasSubstr(STD_FILE_CalcDomainPathSha1A(record.domain, record.path)));
}

TEST(Formats, TheHashCache) {
    const std::string id = STD_FILE_CalcDomainPathSha1A("HomeDomain", "Library/SMS/sms.db");
    std::map<std::string, ST_DB_FILE_INFO> entries = {{id, {id, "HomeDomain", "Library/SMS/sms.db", 0}}};
    const TemporaryFolder folder;
    ASSERT_TRUE(CBackupMgr::GetInstance()->SaveIOS9HashCache(folder.Path("cache"), entries));
    EXPECT_EQ(Dump("cache"), folder.Read("cache"));
}

TEST(Formats, EveryReturnCodeIsListed) {
    EXPECT_THAT(
        Codes(Section("Return codes")),
        testing::ElementsAre(kToolDone, kToolBadCommand, kToolNoDevice, kToolNotWritable, kToolDiskFull,
                             kToolBackupDamaged, kToolNoBackup, kToolWrongPassword, kToolFailed,
                             kRunnerNoExitMessage, kRunnerPipeFailed, kRunnerStartFailed));
}

TEST(Formats, EveryResultIsListedAndSaidInWords) {
    const std::vector<int> codes = Codes(Section("Results of typed backups"));
    EXPECT_THAT(codes,
                testing::ElementsAre(kJobDone, kJobNoDevice, kJobNothingNeeded, kJobCannotOpenManifestDb,
                                     kJobRecordNotWritten, kJobNoFolder, kJobNoRecords, kJobCancelled,
                                     kJobUnknownType, kJobNoIdentifier, kJobAlreadyRunning, kJobNoQuery,
                                     kJobNoDomains, kJobCannotOpenMbdb, kJobUnknownVersion));
    for (const int code : codes) {
        EXPECT_THAT(WordsForJob(code), HasSubstr(fmt::format("(code {})", code)));
        EXPECT_THAT(WordsForJob(code), testing::Not(HasSubstr("backup tool")))
            << "that is for the codes of runs";
    }
}

TEST(Formats, EveryEventIsListed) {
    const std::string events = Section("Events");
    for (const int code : {kCallBackBackupInfo, kCallBackBackup, kCallBackRestore, kCallBackChangePassword})
        EXPECT_THAT(events, HasSubstr(fmt::format("\n| {} |", code)));
    for (const int event :
         {kSyncEventOther, kSyncEventBackupProgress, kSyncEventBackupDone, kSyncEventBackupFailed,
          kSyncEventRestoreProgress, kSyncEventRestoreDone, kSyncEventRestoreFailed})
        EXPECT_THAT(events, HasSubstr(fmt::format("\n| {} |", event)));
}

TEST(Formats, TheConfigurationIsTheBundlesOwn) {
    const std::string section = Section("vm_config.ini");
    const std::size_t begin = section.find("```ini\n") + 7;
    const std::string shown = section.substr(begin, section.find("```", begin) - begin);
    static const std::regex comments("(^|\n);[^\n]*");
    std::string shipped = ReadWholeFile(DOCS_FOLDER "/../Host/Resources/Config/vm_config.ini");
    shipped = std::regex_replace(shipped, comments, "");
    static const std::regex blank("^\n+");
    EXPECT_EQ(shown, std::regex_replace(shipped, blank, ""));
}
