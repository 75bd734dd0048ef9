#pragma once

#include <string>

#include "Host/kruteinctl/Presenter.h"

/// For terminals: one line that is drawn over and over, gone at the end.
class TerminalPresenter : public Presenter {
 public:
    using Presenter::Presenter;

 private:
    void DoShow(const ProgressState& state) override;
    void DoNote(const std::string& text) override;
    void DoDone(const Summary& summary) override;
    void Interrupt() override;

    std::string m_drawn;
};

/// The line for a state, at most `columns` columns wide.
std::string ProgressLine(const ProgressState& state, std::size_t columns);
