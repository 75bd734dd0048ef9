#pragma once

#include <string>
#include <vector>

#include "Common/Export.h"

/// What the library logged, for tests.
struct LogLine {
    std::string function;
    std::string sourceFile;
    int line = 0;
    int level = 0;
    std::string text;  ///< formatted, with its line end
};

KRUTEIN_API std::vector<LogLine> RecordedLog();
KRUTEIN_API std::vector<std::string> RecordedTexts();
/// The names of the log files that were opened, one for each call.
KRUTEIN_API std::vector<std::string> OpenedLogs();
KRUTEIN_API void ForgetLog();
