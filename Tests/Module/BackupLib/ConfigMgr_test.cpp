#include "Module/BackupLib/ConfigMgr.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <regex>
#include <thread>

#include "Tests/support/TemporaryFolder.h"

using testing::ElementsAre;
using testing::StartsWith;

namespace fs = std::filesystem;

namespace {

CConfigMgr& Config() {
    return *CConfigMgr::GetInstance();
}

}  // namespace

TEST(BackupTypes, TwoValuesAreTheWholeDevice) {
    EXPECT_TRUE(Config().IsFullBackup(0));
    EXPECT_TRUE(Config().IsFullBackup(-1));
    for (const int type : {-2, 1, 2, 4, 8, 16, 30, 64, 128, 0x7FFFFFFF})
        EXPECT_FALSE(Config().IsFullBackup(type));
}

TEST(BackupTypes, HaveFolderNames) {
    const std::vector<std::pair<int, std::string>> names = {
        {0, "Velmora_Full_Backup"},
        {-1, "Velmora_Full_Backup"},
        {2, "Velmora_Wechat_Backup"},
        {4, "Velmora_WhatsApp_Backup"},
        {6, "Velmora_Wechat_WhatsApp_Backup"},
        {8, "Velmora_SMS_Backup"},
        {16, "Velmora_Contact_Backup"},
        {30, "Velmora_Wechat_WhatsApp_SMS_Contact_Backup"},
        {64, "Velmora_iCloud_Backup"},
        {65, "Velmora_iCloud_Backup"},
        {1, "UNKNOWN_1"},
        {32, "UNKNOWN_32"},
        {33, "UNKNOWN_33"},
        {128, "UNKNOWN_128"},
        {-2, "Velmora_Wechat_WhatsApp_SMS_Contact_iCloud_Backup"},
    };
    for (const auto& [type, name] : names)
        EXPECT_EQ(Config().GetForderNameFromBackupType(type), name) << type;
}

TEST(BackupFolder, IsNamedForTypeAndTime) {
    const TemporaryFolder folder;
    const std::string path = Config().GenerateBackupDir(8, folder.Path() + "\\new\\root");
    const std::regex form(folder.Path("new/root/Velmora_SMS_Backup") +
                          "/[0-9]{4}_[0-9]{2}_[0-9]{2}__[0-9]{2}_[0-9]{2}_[0-9]{2}");
    EXPECT_TRUE(std::regex_match(path, form)) << path;
    EXPECT_TRUE(fs::is_directory(path));
}

TEST(BackupFolder, CarriesTheLocalTime) {
    const TemporaryFolder folder;
    setenv("TZ", "XYZ-3:30", 1);
    tzset();
    const std::time_t before = std::time(nullptr);
    const std::string path = Config().GenerateBackupDir(0, folder.Path());
    std::tm stamp{};
    ASSERT_NE(strptime(fs::path(path).filename().c_str(), "%Y_%m_%d__%H_%M_%S", &stamp), nullptr);
    const std::time_t then = timegm(&stamp) - std::time_t{3 * 60 + 30} * 60;
    unsetenv("TZ");
    tzset();
    EXPECT_GE(then, before);
    EXPECT_LE(then, std::time(nullptr));
}

TEST(BackupFolder, OfTheSameSecondIsTheSame) {
    const TemporaryFolder folder;
    // Two calls in a row are in one second, unless the clock has just turned.
    std::string first;
    std::string second;
    for (int i = 0; i < 3 && (first.empty() || first != second); ++i) {
        first = Config().GenerateBackupDir(2, folder.Path());
        second = Config().GenerateBackupDir(2, folder.Path());
    }
    EXPECT_EQ(first, second);
}

TEST(BackupFolder, WithoutARootLiesInTheHomeFolder) {
    const TemporaryFolder folder;
    const char* const given = std::getenv("HOME");
    const std::string home = given == nullptr ? "" : given;
    setenv("HOME", folder.Path().c_str(), 1);
    EXPECT_THAT(Config().GenerateBackupDir(4, ""),
                StartsWith(folder.Path("VelMora_backup_cache/Velmora_WhatsApp_Backup/")));
    setenv("HOME", home.c_str(), 1);
}

TEST(BackupFolder, IsNamedAlsoWhereItCannotBeMade) {
    const TemporaryFolder folder;
    const std::string file = folder.Write("file");
    EXPECT_THAT(Config().GenerateBackupDir(4, file), StartsWith(file + "/Velmora_WhatsApp_Backup/"));
}

TEST(BackupFolder, OfALongRootIsNotCut) {
    const TemporaryFolder folder;
    std::string root = folder.Path();
    while (root.size() < 2500)
        root += "/" + std::string(200, 'd');
    const std::string path = Config().GenerateBackupDir(4, root);
    EXPECT_THAT(path, StartsWith(root + "/Velmora_WhatsApp_Backup/"));
    EXPECT_TRUE(fs::is_directory(path));
}

TEST(Selection, ReadsDomainsAndPathsInLowerCase) {
    std::vector<std::string> domains;
    std::vector<std::string> paths;
    EXPECT_TRUE(Config().GetAppDomainAndRelativePath({"backup_SMS", "BOTH", "none"}, domains, paths));
    EXPECT_THAT(domains, ElementsAre("mixedcase-domain"));
    EXPECT_THAT(paths, ElementsAre("library/sms", "media/dcim"));
}

TEST(Selection, AppendsAndKeepsWhatIsTwice) {
    std::vector<std::string> domains = {"before"};
    std::vector<std::string> paths;
    EXPECT_TRUE(Config().GetAppDomainAndRelativePath({"both", "both"}, domains, paths));
    EXPECT_THAT(domains, ElementsAre("before", "mixedcase-domain", "mixedcase-domain"));
    EXPECT_THAT(paths, ElementsAre("media/dcim", "media/dcim"));
}

TEST(Selection, IsTrueWhenAListHasAnEntryAtTheEnd) {
    std::vector<std::string> domains;
    std::vector<std::string> paths;
    EXPECT_FALSE(Config().GetAppDomainAndRelativePath({}, domains, paths));
    EXPECT_FALSE(Config().GetAppDomainAndRelativePath({"none", "backup_full"}, domains, paths));
    paths.emplace_back("before");
    EXPECT_TRUE(Config().GetAppDomainAndRelativePath({}, domains, paths));
}

TEST(Selection, HasThreeFormsOfQueries) {
    EXPECT_EQ(Config().GetSQL({"backup_SMS"}),
              " select * from  files where  relativePath like '%library/sms%'   COLLATE NOCASE; ");
    EXPECT_EQ(Config().GetSQL({"backup_weChat"}),
              " select * from  files where domain like '%appdomain-com.tencent.xin%' COLLATE NOCASE; ");
    EXPECT_EQ(Config().GetSQL({"Both", "backup_SMS"}),
              " select * from  files where domain like '%mixedcase-domain%' or  relativePath like "
              "'%media/dcim%' or "
              "relativePath like '%library/sms%'   COLLATE NOCASE; ");
    EXPECT_EQ(Config().GetSQL({"backup_weChat", "backup_whatsApp"}),
              " select * from  files where domain like '%appdomain-com.tencent.xin%' or domain like "
              "'%appdomaingroup-group.net.whatsapp.whatsapp.shared%' COLLATE NOCASE; ");
}

TEST(Selection, WithoutConfigurationThereIsNoQuery) {
    EXPECT_EQ(Config().GetSQL({}), "");
    EXPECT_EQ(Config().GetSQL({"backup_full", "none"}), "");
}

TEST(Selection, AValueIsTakenAsItIs) {
    EXPECT_EQ(Config().GetSQL({"quoted"}),
              " select * from  files where domain like '%it's%' COLLATE NOCASE; ");
}

TEST(Selection, ALongQueryComesOutWhole) {
    const std::vector<std::string> sections(500, "both");
    const std::string query = Config().GetSQL(sections);
    EXPECT_GT(query.size(), 30000U);
    EXPECT_EQ(query.substr(query.size() - 21), "%'   COLLATE NOCASE; ");
}

TEST(ConfigManager, IsOneForTheProcess) {
    EXPECT_EQ(CConfigMgr::GetInstance(), &Config());
    EXPECT_TRUE(Config().IsNeedCopyDirWhenFullRestore());
}

TEST(ConfigManager, GivesTheConfigurationToTheHost) {
    ASSERT_NE(global_getVmConfig(), nullptr);
    EXPECT_EQ(global_getVmConfig()->getIni_string("both", "domain", ""), "MixedCase-Domain");
}

TEST(ConfigManager, AnswersManyThreads) {
    std::vector<std::thread> threads;
    threads.reserve(8);
    for (int i = 0; i < 8; ++i) {
        threads.emplace_back([] {
            for (int call = 0; call < 200; ++call)
                EXPECT_FALSE(Config().GetSQL({"both"}).empty());
        });
    }
    for (std::thread& thread : threads)
        thread.join();
}
