#include <fmt/format.h>

#include <cstdlib>
#include <exception>

#include "Host/kruteinctl/Commands.h"
#include "Host/kruteinctl/Inspection.h"
#include "Host/kruteinctl/ListCommand.h"
#include "Host/kruteinctl/Options.h"
#include "Host/kruteinctl/Presenter.h"
#include "Host/kruteinctl/Session.h"
#include "Host/kruteinctl/StopSignals.h"
#include "Host/kruteinctl/Streams.h"

namespace {

using RunCommand = Summary (*)(const Options&, Session&);

/// Null for a command that does not run the backup tool.
RunCommand RunFor(CommandName command) {
    switch (command) {
        case CommandName::kBackup:
            return &RunBackupCommand;
        case CommandName::kRestore:
            return &RunRestoreCommand;
        case CommandName::kSize:
            return &RunSizeCommand;
        default:
            return nullptr;
    }
}

void Run(RunCommand command, const Options& options, Presenter& presenter, StopSignals& signals) {
    const CollectedErrors collected([&](const std::string& line) { presenter.ToolLine(line); });
    Session session(presenter, signals);
    Summary summary = command(options, session);
    summary.elapsed = session.Elapsed();
    presenter.Done(summary);
}

/// The commands that only read what is on disk. A signal ends them as it ends any program.
void Look(const Options& options, const Streams& streams) {
    switch (options.command) {
        case CommandName::kList:
            return RunListCommand(options, streams);
        default:
            throw Failure(ExitCode::kUsage, "no such command");
    }
}

ExitCode Perform(const Options& options, const Streams& streams, StopSignals& signals) {
    const std::unique_ptr<Presenter> owned = MakePresenter(options.output, streams);
    Presenter& presenter = *owned;
    try {
        if (const RunCommand run = RunFor(options.command)) {
            Run(run, options, presenter, signals);
        } else {
            Look(options, streams);
        }
        return ExitCode::kDone;
    } catch (const Failure& failure) {
        presenter.Failed(options.command, failure);
        return failure.Code();
    } catch (const std::exception& error) {
        presenter.Failed(options.command, Failure(ExitCode::kFailed, error.what()));
        return ExitCode::kFailed;
    }
}

ExitCode Main(int count, const char* const* words, const Streams& streams, StopSignals& signals) {
    try {
        std::string text;
        const std::optional<Options> options = ParseOptions(count, words, text);
        if (options && IsInspection(options->command)) return RunInspection(*options, streams, signals);
        if (options) return Perform(*options, streams, signals);
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
    if (code == ExitCode::kStopped) std::_Exit(static_cast<int>(code));
    return static_cast<int>(code);
}
