#pragma once

#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "Host/kruteinctl/Failure.h"
#include "Host/kruteinctl/Options.h"
#include "Host/kruteinctl/Progress.h"
#include "Host/kruteinctl/Streams.h"

/// What a command achieved.
struct Summary {
    CommandName command = CommandName::kBackup;
    std::string udid;
    std::string path;   ///< of the backup
    std::string types;  ///< in words; "" for a backup through the facade
    std::optional<std::uint64_t> files;
    std::optional<std::uint64_t> bytes;
    std::chrono::seconds elapsed{0};
};

/// Shows the user how it goes. Functions may be called from any thread.
class Presenter {
 public:
    explicit Presenter(const Streams& streams) : m_streams(streams) {}
    virtual ~Presenter() = default;

    /// Called some ten times a second while a run lasts.
    void Show(const ProgressState& state);
    /// A line that the backup tool wrote to its standard error.
    void ToolLine(const std::string& line);
    /// Something worth knowing that is no error.
    void Note(const std::string& text);
    void Done(const Summary& summary);
    /// \param command  nothing when it is not even known which one was meant.
    void Failed(std::optional<CommandName> command, const Failure& failure);

 protected:
    virtual void DoShow(const ProgressState& state) = 0;
    virtual void DoNote(const std::string& text) = 0;
    virtual void DoDone(const Summary& summary) = 0;
    /// Makes room for a line on standard error.
    virtual void Interrupt() {}
    virtual void DoFailed(std::optional<CommandName> command, const Failure& failure);

    const Streams& m_streams;

 private:
    std::mutex m_mutex;
};

/// The presenter for this kind of output: a bar on a terminal, lines elsewhere, objects for programs.
std::unique_ptr<Presenter> MakePresenter(Output output, const Streams& streams);
