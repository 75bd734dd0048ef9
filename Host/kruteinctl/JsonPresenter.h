#pragma once

#include <string>

#include "Host/kruteinctl/Presenter.h"

/// For programs: one object a line on standard output, as Docs/scripting.md tells.
class JsonPresenter : public Presenter {
 public:
    using Presenter::Presenter;

 private:
    void DoShow(const ProgressState& state) override;
    void DoNote(const std::string& text) override;
    void DoDone(const Summary& summary) override;
    void DoFailed(std::optional<CommandName> command, const Failure& failure) override;

    std::string m_last;
};
