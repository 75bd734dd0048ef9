#include "Tests/Host/kruteinctl/HostBundle.h"

#include <algorithm>
#include <filesystem>
#include <nlohmann/json.hpp>

#include "Common/std/std_process.h"

namespace fs = std::filesystem;

namespace {

/// Larger than the disks that the tests run on, so that a device can hold more than fits.
constexpr long long kDiskBytes = 17'000'000'000'000;

}  // namespace

HostBundle::HostBundle() {
    const fs::path contents = m_folder.Path("Krutein.app/Contents");
    fs::create_directories(contents / "MacOS");
    fs::create_directories(contents / "Frameworks");
    fs::create_directories(m_folder.Path("devices"));
    fs::copy_file(KRUTEINCTL_PROGRAM, contents / "MacOS/kruteinctl");
    fs::create_symlink(SAMPLE_TOOL_PROGRAM, ToolPath());
    HasConfiguration(ReadWholeFile(HOST_RESOURCES "/Config/vm_config.ini"));
}

void HostBundle::HasDevice(long long photos, long long bytesEach) {
    const nlohmann::json contents = {{"photos", {{"count", photos}, {"bytesEach", bytesEach}}}};
    HasDeviceWith(contents.dump());
}

void HostBundle::HasDeviceWith(const std::string& contents, const std::string& systemVersion) {
    const nlohmann::json device = {
        {"udid", kUdid},
        {"name", "A phone for tests"},
        {"productType", "iPhone14,5"},
        {"systemVersion", systemVersion},
        {"buildVersion", "21E236"},
        {"serialNumber", "TEST1"},
        {"disk", {{"totalBytes", kDiskBytes}, {"availableBytes", kDiskBytes / 2}}},
        {"contents", nlohmann::json::parse(contents)},
    };
    m_folder.Write("devices/" + std::string(kUdid) + ".json", device.dump());
}

void HostBundle::HasScriptedTool() {
    HasNoTool();
    fs::create_symlink(SCRIPTED_TOOL_PROGRAM, ToolPath());
}

void HostBundle::HasNoTool() {
    fs::remove(ToolPath());
}

Command HostBundle::Kruteinctl(const std::vector<std::string>& words) const {
    std::vector<std::string> all = {m_folder.Path("Krutein.app/Contents/MacOS/kruteinctl")};
    all.insert(all.end(), words.begin(), words.end());
    Command command(std::move(all));
    command.environment = {{"KRUTEIN_LOG_DIR", m_folder.Path("logs")},
                           {"KRUTEIN_SAMPLE_DEVICES", m_folder.Path("devices")},
                           {"KRUTEIN_SAMPLE_STATE", m_folder.Path("state")}};
    return command;
}

Command HostBundle::Backup(const std::vector<std::string>& more) const {
    std::vector<std::string> words = {"backup", kUdid, "--to", Backups()};
    words.insert(words.end(), more.begin(), more.end());
    return Kruteinctl(words);
}

std::vector<std::string> HostBundle::BackupNames() const {
    std::vector<std::string> names;
    std::error_code error;
    for (const fs::directory_entry& entry : fs::directory_iterator(Backups(), error)) {
        names.push_back(entry.path().filename().string());
    }
    std::sort(names.begin(), names.end());
    return names;
}

bool ToolRuns() {
    return ps_ExistProcess("HandsetArchiver") || ps_ExistProcess("krutein_scripted");
}
