#include "Tests/support/LogRecorder.h"

#include <cstdarg>
#include <cstdio>
#include <mutex>

#include "Common/log/LogHandler.h"

namespace {

struct Record {
    std::mutex mutex;
    std::vector<LogLine> lines;
    std::vector<std::string> opened;
};

Record& TheRecord() {
    static auto* record = new Record;
    return *record;
}

}  // namespace

std::vector<LogLine> RecordedLog() {
    const std::lock_guard<std::mutex> lock(TheRecord().mutex);
    return TheRecord().lines;
}

std::vector<std::string> RecordedTexts() {
    std::vector<std::string> texts;
    for (const LogLine& line : RecordedLog())
        texts.push_back(line.text);
    return texts;
}

std::vector<std::string> OpenedLogs() {
    const std::lock_guard<std::mutex> lock(TheRecord().mutex);
    return TheRecord().opened;
}

void ForgetLog() {
    const std::lock_guard<std::mutex> lock(TheRecord().mutex);
    TheRecord().lines.clear();
    TheRecord().opened.clear();
}

extern "C" void InitLogA(const char* fileName, const char* loggerName) {
    const std::lock_guard<std::mutex> lock(TheRecord().mutex);
    TheRecord().opened.push_back(std::string(fileName) + (loggerName == nullptr ? "" : loggerName));
}

extern "C" int LogHandlerA(const char* function, const char* sourceFile, int line, int level,
                           const char* format, ...) {
    char text[4096];
    std::va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(text, sizeof text, format, arguments);
    va_end(arguments);
    const std::lock_guard<std::mutex> lock(TheRecord().mutex);
    TheRecord().lines.push_back({function, sourceFile, line, level, text});
    return 0;
}
