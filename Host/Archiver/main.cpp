// The sample backup tool: it backs up and restores devices that are only descriptions. Started by the library
// with one argument that says everything, see CommandLine.h.

#include <cstdio>
#include <exception>
#include <string>

#include "Common/Version.h"
#include "Host/Archiver/CommandLine.h"
#include "Host/Archiver/MessageWriter.h"
#include "Host/Archiver/StopFlag.h"
#include "Host/Archiver/ToolError.h"
#include "Host/Archiver/jobs/Jobs.h"

namespace {

using namespace krutein;

void Say(const std::string& message) {
    std::fprintf(stderr, "HandsetArchiver: %s\n", OneLine(message).c_str());
}

void Do(const CommandLine& command, MessageWriter& messages) {
    switch (command.verb) {
        case Verb::kBackup:
            return BackUp(command, messages);
        case Verb::kRestore:
            return Restore(command, messages);
        case Verb::kInfo:
            return TellInfo(command, messages);
        case Verb::kChangePassword:
            return ChangePassword(command);
        case Verb::kRestoreSettings:
            return RestoreSettings(command, messages);
    }
}

/// \return what the exit message says.
int CodeOf(const CommandLine& command, MessageWriter& messages) {
    try {
        Do(command, messages);
        return kToolDone;
    } catch (const ToolError& error) {
        Say(error.what());
        return error.Code();
    } catch (const std::exception& error) {
        Say(error.what());
        return kToolFailed;
    }
}

/// \return the status that the process ends with.
int RunCommand(const CommandLine& command) {
    if (!MessageWriter::CanWriteTo(command.pipe)) {
        Say("there is no pipe " + std::to_string(command.pipe) + " to write messages to");
        return kToolBadCommand;
    }
    MessageWriter messages(command.pipe);
    const int code = CodeOf(command, messages);
    messages.Exit(code);
    return code;
}

int RunArgument(const std::string& argument) {
    if (argument == "--help") {
        std::fputs(UsageText().c_str(), stdout);
        return kToolDone;
    }
    if (argument == "--version") {
        std::puts("HandsetArchiver " KRUTEIN_VERSION);
        return kToolDone;
    }
    try {
        return RunCommand(ParseCommandLine(argument));
    } catch (const CommandLineError& error) {
        Say(std::string(error.what()) + "; see --help");
        return kToolBadCommand;
    } catch (const Stopped& stop) {
        return stop.status;  // without an exit message: so the library knows that the work is not done
    } catch (const std::exception& error) {
        Say(error.what());
        return kToolFailed;
    }
}

}  // namespace

int main(int count, char** words) {
    InstallStopHandlers();
    if (count == 2) return RunArgument(words[1]);
    Say("one argument is expected, not " + std::to_string(count - 1) + "; see --help");
    return kToolBadCommand;
}
