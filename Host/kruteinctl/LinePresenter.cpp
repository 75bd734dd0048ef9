#include "Host/kruteinctl/LinePresenter.h"

#include <fmt/format.h>

#include "Host/kruteinctl/SummaryText.h"
#include "Host/kruteinctl/Text.h"

void LinePresenter::DoShow(const ProgressState& state) {
    FILE* const out = m_streams.Out();
    if (state.phase != m_phase) {
        m_phase = state.phase;
        fmt::print(out, "{}\n", m_phase);
    }
    const int tenth = static_cast<int>(state.fraction.value_or(0) * 10);
    if (tenth > m_tenth) {
        m_tenth = tenth;
        fmt::print(out, "{:3}%  {} of {} files  {}\n", tenth * 10, state.done, state.total,
                   HumanTime(state.elapsed));
    }
    std::fflush(out);
}

void LinePresenter::DoNote(const std::string& text) {
    fmt::print(m_streams.Out(), "{}\n", text);
}

void LinePresenter::DoDone(const Summary& summary) {
    fmt::print(m_streams.Out(), "{}", SummaryText(summary));
    std::fflush(m_streams.Out());
}

/// Keeps the order of the lines where both outputs go to one file.
void LinePresenter::Interrupt() {
    std::fflush(m_streams.Out());
}
