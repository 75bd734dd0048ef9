#pragma once

#include <string>

#include "Host/kruteinctl/Presenter.h"

/// For outputs that are no terminal: a line for each phase and each tenth.
class LinePresenter : public Presenter {
 public:
    using Presenter::Presenter;

 private:
    void DoShow(const ProgressState& state) override;
    void DoNote(const std::string& text) override;
    void DoDone(const Summary& summary) override;
    void Interrupt() override;

    std::string m_phase;
    int m_tenth = 0;
};
