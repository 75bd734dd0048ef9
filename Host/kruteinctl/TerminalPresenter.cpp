#include "Host/kruteinctl/TerminalPresenter.h"

#include <fmt/format.h>

#include <algorithm>

#include "Host/kruteinctl/SummaryText.h"
#include "Host/kruteinctl/Text.h"

namespace {

constexpr char kClearLine[] = "\r\x1b[K";
constexpr std::size_t kMaxBarCells = 24;
constexpr std::size_t kLeastNameColumns = 12;

std::string Bar(double fraction, std::size_t cells) {
    const auto filled = static_cast<std::size_t>(fraction * static_cast<double>(cells));
    return "[" + std::string(filled, '#') + std::string(cells - filled, '-') + "]";
}

}  // namespace

std::string ProgressLine(const ProgressState& state, std::size_t columns) {
    if (!state.fraction) {
        return Shortened(fmt::format("{} … {}", state.phase, HumanTime(state.elapsed)), columns);
    }
    const int percent = static_cast<int>(*state.fraction * 100);
    std::string numbers =
        fmt::format(" {:3}%  {}/{} files  {}", percent, state.done, state.total, HumanTime(state.elapsed));
    if (state.remaining) numbers += fmt::format(", {} left", HumanTime(*state.remaining));
    std::string line = Bar(*state.fraction, std::min(kMaxBarCells, columns / 5)) + numbers;
    const std::size_t taken = Columns(line) + 2;
    if (!state.current.empty() && taken + kLeastNameColumns <= columns) {
        line += "  " + Shortened(state.current, columns - taken);
    }
    return Shortened(line, columns);
}

void TerminalPresenter::DoShow(const ProgressState& state) {
    // The last column stays free: some terminals wrap when it is written.
    std::string line = ProgressLine(state, m_streams.TerminalColumns() - 1);
    if (line == m_drawn) return;
    fmt::print(m_streams.Out(), "{}{}", kClearLine, line);
    std::fflush(m_streams.Out());
    m_drawn = std::move(line);
}

void TerminalPresenter::DoNote(const std::string& text) {
    Interrupt();
    fmt::print(m_streams.Out(), "{}\n", text);
    std::fflush(m_streams.Out());
}

void TerminalPresenter::DoDone(const Summary& summary) {
    Interrupt();
    fmt::print(m_streams.Out(), "{}", SummaryText(summary));
    std::fflush(m_streams.Out());
}

void TerminalPresenter::Interrupt() {
    if (m_drawn.empty()) return;
    fmt::print(m_streams.Out(), "{}", kClearLine);
    std::fflush(m_streams.Out());
    m_drawn.clear();
}
