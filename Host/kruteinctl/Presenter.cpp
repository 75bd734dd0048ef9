#include "Host/kruteinctl/Presenter.h"

#include <fmt/format.h>

#include "Host/kruteinctl/JsonPresenter.h"
#include "Host/kruteinctl/LinePresenter.h"
#include "Host/kruteinctl/TerminalPresenter.h"

namespace {

class QuietPresenter : public Presenter {
 public:
    using Presenter::Presenter;

 private:
    void DoShow(const ProgressState& /*state*/) override {}
    void DoNote(const std::string& /*text*/) override {}
    void DoDone(const Summary& /*summary*/) override {}
};

}  // namespace

void Presenter::Show(const ProgressState& state) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    DoShow(state);
}

void Presenter::ToolLine(const std::string& line) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    Interrupt();
    fmt::print(m_streams.Errors(), "{}\n", line);
}

void Presenter::Note(const std::string& text) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    DoNote(text);
}

void Presenter::Done(const Summary& summary) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    DoDone(summary);
}

void Presenter::Failed(std::optional<CommandName> command, const Failure& failure) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    DoFailed(command, failure);
}

void Presenter::DoFailed(std::optional<CommandName> /*command*/, const Failure& failure) {
    Interrupt();
    fmt::print(m_streams.Errors(), "{} {}\n", Painted("kruteinctl:", Colour::kBad, m_streams.ErrorStyle()),
               failure.what());
}

std::unique_ptr<Presenter> MakePresenter(Output output, const Streams& streams) {
    if (output == Output::kJson) return std::make_unique<JsonPresenter>(streams);
    if (output == Output::kQuiet) return std::make_unique<QuietPresenter>(streams);
    if (streams.OutIsDrawable()) return std::make_unique<TerminalPresenter>(streams);
    return std::make_unique<LinePresenter>(streams);
}
