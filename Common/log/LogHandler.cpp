#include "Common/log/LogHandler.h"

#include <spdlog/sinks/rotating_file_sink.h>
#include <spdlog/spdlog.h>

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <mutex>
#include <string>

namespace {

constexpr std::size_t kMaxLogBytes = std::size_t{4} * 1024 * 1024;
constexpr std::size_t kKeptLogs = 3;

struct OpenLog {
    std::mutex mutex;
    std::string path;
    std::shared_ptr<spdlog::logger> logger;
};

/// Never destroyed: detached threads may log while the process ends.
OpenLog& TheLog() {
    static auto* log = new OpenLog;
    return *log;
}

std::string FromEnvironment(const char* name) {
    const char* value = std::getenv(name);
    return value == nullptr ? std::string() : std::string(value);
}

std::string LogFolder() {
    if (std::string own = FromEnvironment("KRUTEIN_LOG_DIR"); !own.empty()) return own;
    if (std::string state = FromEnvironment("XDG_STATE_HOME"); !state.empty()) return state + "/krutein";
    if (std::string home = FromEnvironment("HOME"); !home.empty()) return home + "/" KRUTEIN_LOG_BELOW_HOME;
    return {};
}

spdlog::level::level_enum SpdlogLevel(int level) {
    if (level < 1) return spdlog::level::debug;
    if (level == 1) return spdlog::level::info;
    return level == 2 ? spdlog::level::warn : spdlog::level::err;
}

/// The formatted text without line ends at its end.
std::string Format(const char* format, std::va_list arguments) {
    std::va_list again;
    va_copy(again, arguments);
    const int length = std::vsnprintf(nullptr, 0, format, again);
    va_end(again);
    if (length <= 0) return {};
    std::string text(static_cast<std::size_t>(length) + 1, '\0');
    std::vsnprintf(text.data(), text.size(), format, arguments);
    text.pop_back();
    text.erase(text.find_last_not_of("\r\n") + 1);
    return text;
}

void Open(const char* fileName, const char* loggerName) {
    const std::string folder = LogFolder();
    if (folder.empty()) return;
    OpenLog& log = TheLog();
    const std::lock_guard<std::mutex> lock(log.mutex);
    std::string path = folder + "/" + fileName;
    if (log.logger != nullptr && log.path == path) return;
    auto sink = std::make_shared<spdlog::sinks::rotating_file_sink_mt>(path, kMaxLogBytes, kKeptLogs);
    auto logger =
        std::make_shared<spdlog::logger>(loggerName == nullptr ? "krutein" : loggerName, std::move(sink));
    logger->set_level(spdlog::level::debug);
    logger->set_pattern("%Y-%m-%d %H:%M:%S.%e %P:%t %n %l %v");
    logger->flush_on(spdlog::level::debug);
    // A full disk must not fill the host's standard error with messages about the log.
    logger->set_error_handler([](const std::string&) {});
    log.path = std::move(path);
    log.logger = std::move(logger);
}

std::shared_ptr<spdlog::logger> CurrentLogger() {
    OpenLog& log = TheLog();
    const std::lock_guard<std::mutex> lock(log.mutex);
    return log.logger;
}

int Write(const char* function, const char* sourceFile, int line, int level, const char* format,
          std::va_list arguments) {
    const std::shared_ptr<spdlog::logger> logger = CurrentLogger();
    if (logger == nullptr) return -1;
    logger->log(SpdlogLevel(level), "{}:{} {}: {}", sourceFile == nullptr ? "?" : sourceFile, line,
                function == nullptr ? "?" : function, Format(format, arguments));
    return 0;
}

}  // namespace

extern "C" void InitLogA(const char* fileName, const char* loggerName) {
    if (fileName == nullptr || *fileName == '\0') return;
    try {
        Open(fileName, loggerName);
    } catch (...) {
        // No place for a log is no reason to fail the host: the lines are dropped.
    }
}

extern "C" int LogHandlerA(const char* function, const char* sourceFile, int line, int level,
                           const char* format, ...) {
    if (format == nullptr) return -1;
    std::va_list arguments;
    va_start(arguments, format);
    int result = -1;
    try {
        result = Write(function, sourceFile, line, level, format, arguments);
    } catch (...) {
        result = -1;
    }
    va_end(arguments);
    return result;
}
