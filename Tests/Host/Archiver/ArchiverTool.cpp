#include "Tests/Host/Archiver/ArchiverTool.h"

#include <fcntl.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <filesystem>

#include "Common/std/std_objc.h"
#include "Common/std/std_sha1.h"

using nlohmann::json;

namespace {

std::string ToolPath() {
    const std::filesystem::path program = STD_OBJC_GetCurrentAppPath();
    return (program.parent_path().parent_path() / "Frameworks" / "HandsetArchiver").string();
}

std::string WithPipe(std::string argument, int descriptor) {
    static constexpr char kPlace[] = "PIPE";
    const std::size_t at = argument.find(kPlace);
    if (at != std::string::npos) argument.replace(at, sizeof kPlace - 1, std::to_string(descriptor));
    return argument;
}

/// \return false at the end of the pipe.
bool ReadWhole(int descriptor, void* to, std::size_t bytes) {
    auto* next = static_cast<char*>(to);
    while (bytes > 0) {
        const ssize_t count = read(descriptor, next, bytes);
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) return false;
        next += count;
        bytes -= static_cast<std::size_t>(count);
    }
    return true;
}

}  // namespace

RunningTool::RunningTool(const Options& options) {
    std::array<int, 2> ends{-1, -1};
    if (pipe(ends.data()) != 0) ADD_FAILURE() << "no pipe: " << errno;
    for (const int end : ends)
        fcntl(end, F_SETFD, FD_CLOEXEC);
    m_readEnd = ends[0];
    Command child({ToolPath(), WithPipe(options.argument, ends[1])});
    child.environment = options.environment;
    child.descriptors = {ends[1]};
    child.prepare = options.prepare;
    m_process = std::make_unique<ChildProcess>(child);
    close(ends[1]);
    if (options.reading) StartReading();
}

RunningTool::~RunningTool() {
    m_process.reset();
    if (m_reader.joinable()) m_reader.join();
    Abandon();
}

void RunningTool::StartReading() {
    m_reader = std::thread([this] { ReadMessages(); });
}

void RunningTool::AwaitFullPipe() const {
    constexpr int kQuietChecks = 30;  // of 10 ms
    int before = 0;
    for (int quiet = 0; quiet < kQuietChecks; ++quiet) {
        int bytes = 0;
        ioctl(m_readEnd, FIONREAD, &bytes);
        if (bytes != before || bytes == 0) quiet = 0;
        before = bytes;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
}

void RunningTool::Abandon() {
    if (m_readEnd != -1) close(m_readEnd);
    m_readEnd = -1;
}

void RunningTool::AwaitMessages(std::size_t count) {
    std::unique_lock<std::mutex> lock(m_mutex);
    m_changed.wait_for(lock, std::chrono::seconds(30),
                       [this, count] { return m_ended || m_messages.size() >= count; });
}

int RunningTool::Wait() {
    const int code = m_process->Wait();
    if (m_reader.joinable()) m_reader.join();
    return code;
}

std::vector<ToolMessage> RunningTool::Messages() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_messages;
}

bool RunningTool::ReadMessage(ToolMessage& message) const {
    krutein::PipeMessageHeader header{};
    if (!ReadWhole(m_readEnd, &header, sizeof header)) return false;
    message = {header.type, header.arg1, header.arg2, ""};
    if (header.length <= 0) return true;
    message.text.resize(static_cast<std::size_t>(header.length));
    EXPECT_TRUE(ReadWhole(m_readEnd, message.text.data(), message.text.size())) << "a message was cut";
    EXPECT_EQ(message.text.back(), '\0');
    message.text.pop_back();
    return true;
}

void RunningTool::ReadMessages() {
    ToolMessage message;
    while (ReadMessage(message)) {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_messages.push_back(message);
        m_changed.notify_all();
    }
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_ended = true;
    m_changed.notify_all();
}

std::vector<ToolMessage> ToolRun::Progress() const {
    std::vector<ToolMessage> progress;
    std::copy_if(messages.begin(), messages.end(), std::back_inserter(progress),
                 [](const ToolMessage& message) { return message.type == krutein::kPipeProgress; });
    return progress;
}

testing::AssertionResult EndedWith(const ToolRun& run, int code) {
    auto failure = testing::AssertionFailure() << "code " << run.code << ", errors: " << run.errors;
    if (run.code != code) return failure;
    if (!run.HasExitMessage()) return failure << ", no exit message";
    const ToolMessage& exit = run.messages.back();
    if (exit.first != 0 || exit.second != code || !exit.text.empty()) {
        return failure << ", exit message says " << exit.first << " " << exit.second << " " << exit.text;
    }
    if (run.Progress().size() + 1 != run.messages.size()) return failure << ", more than one exit message";
    const auto lines = std::count(run.errors.begin(), run.errors.end(), '\n');
    if (lines != (code == 0 ? 0 : 1)) return failure << ", lines: " << lines;
    return testing::AssertionSuccess();
}

ArchiverTest::ArchiverTest(const Phone& phone)
    : m_phone(phone),
      m_environment{{"KRUTEIN_SAMPLE_DEVICES", Path("devices")},
                    {"KRUTEIN_SAMPLE_STATE", Path("state")},
                    {"KRUTEIN_SAMPLE_FILES_PER_SECOND", ""}} {
    Connect(Description());
}

json ArchiverTest::Description() const {
    json description = json::parse(R"({
        "udid": "00008110-000A1B2C3D4E5F60", "name": "Ännchen's 📱", "productType": "iPhone14,5",
        "buildVersion": "21E236", "serialNumber": "SAMPLE7",
        "phoneNumber": "+1 555 010 0001", "disk": {"totalBytes": 64000000000, "availableBytes": 1000000},
        "contents": {
            "photos": {"count": 6, "bytesEach": 300000},
            "messages": {"chats": 6, "count": 83, "attachments": 10, "attachmentBytes": 2000},
            "whatsapp": {"chats": 4, "messages": 61},
            "wechat": {"accounts": 2, "chats": 5, "messages": 32},
            "contacts": {"count": 12, "images": 4},
            "other": {"count": 30, "bytesEach": 700}
        }})");
    description["systemVersion"] = m_phone.systemVersion;
    return description;
}

void ArchiverTest::Connect(const json& description) const {
    m_folder.Write("devices/" + description.at("udid").get<std::string>() + ".json", description.dump());
}

void ArchiverTest::Disconnect(const std::string& udid) const {
    std::filesystem::remove(Path("devices/" + udid + ".json"));
}

std::unique_ptr<RunningTool> ArchiverTest::Start(const std::string& argument, bool reading) const {
    return std::make_unique<RunningTool>(RunningTool::Options{argument, m_environment, m_prepare, reading});
}

ToolRun ArchiverTest::Run(const std::string& argument) const {
    const auto tool = Start(argument);
    const int code = tool->Wait();
    return {code, tool->Messages(), tool->Errors()};
}

std::string ArchiverTest::BackupCommand(const std::string& folder) const {
    return "-backup|-backuppath|" + (folder.empty() ? Path("backups") : folder) + "|-target|" + kUdid +
           "|-pipe|PIPE|-model|1";
}

std::string ArchiverTest::RestoreCommand() const {
    return "-restore|-backuppath|" + Path("backups") + "|-target|" + kUdid + "|-pipe|PIPE|-model|1";
}

std::string ArchiverTest::InfoCommand() const {
    return "-version|16.0|-info|-backuppath|" + Path("backups") + "|-source|" + kUdid + "|-target|" + kUdid +
           "|-pipe|PIPE|-model|1";
}

std::string ArchiverTest::RestoreSettingsCommand() const {
    return "-version|17.4.1|-restore_all_setting|-backuppath|" + Path("backups") + "|-source|" + kUdid +
           "|-target|" + kUdid + "|-pipe|PIPE|-model|1";
}

std::string ArchiverTest::PasswordCommand(const std::string& before, const std::string& after) {
    return std::string("-changepasswd|-target|") + kUdid + "|-old|" + before + "|-new|" + after +
           "|-pipe|PIPE|-model|1";
}

std::string ArchiverTest::BackupPath(const std::string& name) const {
    return Path("backups/" + std::string(kUdid) + (name.empty() ? "" : "/" + name));
}

std::string ArchiverTest::PlaceOf(const std::string& fileId) const {
    return m_phone.isFlat ? fileId : fileId.substr(0, 2) + "/" + fileId;
}

std::string ArchiverTest::PlaceOf(const std::string& domain, const std::string& path) const {
    return PlaceOf(STD_FILE_CalcDomainPathSha1A(domain, path));
}

void PrintTo(const Phone& phone, std::ostream* out) {
    *out << phone.name;
}
