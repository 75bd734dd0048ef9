#pragma once

#include <string>

#include "Host/kruteinctl/Presenter.h"

/// What people read at the end of a command, with a line end.
std::string SummaryText(const Summary& summary);
