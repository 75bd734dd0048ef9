#include <fmt/format.h>

#include <cstdlib>
#include <exception>

#include "Host/kruteinctl/Commands.h"
#include "Host/kruteinctl/ConnectedDevices.h"
#include "Host/kruteinctl/DeviceList.h"
#include "Host/kruteinctl/InfoCommand.h"
#include "Host/kruteinctl/Inspection.h"
#include "Host/kruteinctl/Options.h"
#include "Host/kruteinctl/Presenter.h"
#include "Host/kruteinctl/Question.h"
#include "Host/kruteinctl/Session.h"
#include "Host/kruteinctl/StopSignals.h"
#include "Host/kruteinctl/Streams.h"

namespace {

Summary Run(const Options& options, Session& session) {
    switch (options.command) {
        case CommandName::kBackup:
            return RunBackupCommand(options, session);
        case CommandName::kRestore:
            return RunRestoreCommand(options, session);
        case CommandName::kSize:
            return RunSizeCommand(options, session);
        default:
            throw Failure(ExitCode::kUsage, "no such command");
    }
}

/// The commands that run the backup tool.
void RunWithTool(const Options& options, Presenter& presenter, StopSignals& signals) {
    const CollectedErrors collected([&](const std::string& line) { presenter.ToolLine(line); });
    Session session(presenter, signals);
    Summary summary = Run(options, session);
    summary.elapsed = session.Elapsed();
    presenter.Done(summary);
}

/// The options with the only connected device, where a device is needed and none was named.
Options WithDevice(Options options) {
    const bool isNeeded = options.command == CommandName::kBackup || options.command == CommandName::kRestore;
    if (isNeeded && options.udid.empty())
        options.udid = OnlyConnectedUdid(Question::Clock::now() + options.timeout);
    return options;
}

/// While a device is asked here, a signal ends the process as it ends any program.
ExitCode Perform(const Options& asked, const Streams& streams, Presenter& presenter, StopSignals& signals) {
    const Options options = WithDevice(asked);
    if (IsInspection(options)) return RunInspection(options, streams, signals);
    if (options.command == CommandName::kDevices) {
        RunDevicesCommand(options, streams);
    } else if (options.command == CommandName::kInfo) {
        RunInfoCommand(options, streams);
    } else {
        RunWithTool(options, presenter, signals);
    }
    return ExitCode::kDone;
}

ExitCode PerformOrFail(const Options& options, const Streams& streams, StopSignals& signals) {
    const std::unique_ptr<Presenter> presenter = MakePresenter(options.output, streams);
    try {
        return Perform(options, streams, *presenter, signals);
    } catch (const Failure& failure) {
        presenter->Failed(options.command, failure);
        return failure.Code();
    } catch (const std::exception& error) {
        presenter->Failed(options.command, Failure(ExitCode::kFailed, error.what()));
        return ExitCode::kFailed;
    }
}

ExitCode Main(int count, const char* const* words, const Streams& streams, StopSignals& signals) {
    try {
        std::string text;
        const std::optional<Options> options = ParseOptions(count, words, text);
        if (options) return PerformOrFail(*options, streams, signals);
        fmt::print(streams.Out(), "{}", text);
        return ExitCode::kDone;
    } catch (const Failure& failure) {
        const Output output = WantsJson(count, words) ? Output::kJson : Output::kPeople;
        MakePresenter(output, streams)->Failed(std::nullopt, failure);
        return failure.Code();
    }
}

}  // namespace

int main(int count, char** words) {
    StopSignals signals;
    const Streams streams;
    const ExitCode code = Main(count, words, streams, signals);
    std::fflush(streams.Out());
    // After a stop the library's worker may still be on its way; it must not meet half-destroyed statics.
    // So must not a question that a device has not answered.
    if (code == ExitCode::kStopped || Question::AnyIsLeftBehind()) std::_Exit(static_cast<int>(code));
    return static_cast<int>(code);
}
