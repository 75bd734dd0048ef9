#include "Host/kruteinctl/Inspection.h"

#include <csignal>
#include <cstdlib>
#include <memory>

#include "Host/BackupFormat/BackupDamage.h"
#include "Host/BackupFormat/Interrupt.h"
#include "Host/kruteinctl/DryRun.h"
#include "Host/kruteinctl/FilesCommand.h"
#include "Host/kruteinctl/ListCommand.h"
#include "Host/kruteinctl/Presenter.h"
#include "Host/kruteinctl/Printer.h"
#include "Host/kruteinctl/ShowCommand.h"
#include "Host/kruteinctl/Text.h"
#include "Host/kruteinctl/VerifyCommand.h"

namespace {

/// Who asks for the third time does not want to wait for the clean way.
constexpr int kPatience = 3;

/// Raises an interrupt when the user wants to stop, as long as it lives.
class StopListener {
 public:
    StopListener(StopSignals& signals, krutein::Interrupt& interrupt) : m_signals(signals) {
        m_signals.Tell([this, &interrupt] {
            interrupt.Raise();
            if (++m_stops >= kPatience) std::_Exit(static_cast<int>(ExitCode::kStopped));
        });
    }
    ~StopListener() { m_signals.Tell(nullptr); }
    StopListener(const StopListener&) = delete;
    StopListener& operator=(const StopListener&) = delete;

 private:
    StopSignals& m_signals;
    int m_stops = 0;
};

using Command = ExitCode (*)(const Options&, Printer&, const krutein::Interrupt&);

/// Null for a command that runs the backup tool.
Command CommandFor(const Options& options) {
    switch (options.command) {
        case CommandName::kBackup:
            return options.dryRun ? &RunDryRun : nullptr;
        case CommandName::kList:
            return &RunListCommand;
        case CommandName::kFiles:
            return &RunFilesCommand;
        case CommandName::kVerify:
            return &RunVerifyCommand;
        case CommandName::kShow:
            return &RunShowCommand;
        default:
            return nullptr;
    }
}

/// Whatever goes wrong as the end of the command that the user is told.
ExitCode RunOrFail(const Options& options, Printer& printer, const krutein::Interrupt& interrupt) {
    try {
        const ExitCode code = CommandFor(options)(options, printer, interrupt);
        printer.Flush();
        return code;
    } catch (const Failure&) {
        throw;
    } catch (const krutein::Interrupt::Raised&) {
        throw Failure(ExitCode::kStopped, "stopped");
    } catch (const krutein::BackupDamage& damage) {
        throw Failure(ExitCode::kBackupDamaged, "the backup is damaged: " + Printable(damage.what()));
    } catch (const std::exception& error) {
        throw Failure(ExitCode::kFailed, Printable(error.what()));
    }
}

}  // namespace

bool IsInspection(const Options& options) {
    return CommandFor(options) != nullptr;
}

ExitCode RunInspection(const Options& options, const Streams& streams, StopSignals& signals) {
    std::signal(SIGPIPE, SIG_IGN);  // a reader that has seen enough is no reason to leave copies behind
    krutein::Interrupt interrupt;
    const StopListener listener(signals, interrupt);
    Printer printer(options.output, streams);
    try {
        return RunOrFail(options, printer, interrupt);
    } catch (const Failure& failure) {
        std::fflush(streams.Out());
        MakePresenter(options.output, streams)->Failed(options.command, failure);
        return failure.Code();
    }
}
