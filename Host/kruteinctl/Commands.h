#pragma once

#include "Host/kruteinctl/Options.h"
#include "Host/kruteinctl/Presenter.h"
#include "Host/kruteinctl/Session.h"

// The commands that run the backup tool. Each returns what it achieved or throws a Failure.

Summary RunBackupCommand(const Options& options, Session& session);
Summary RunRestoreCommand(const Options& options, Session& session);
Summary RunSizeCommand(const Options& options, Session& session);

/// \throws Failure (tool not started) when the bundle has no backup tool that can be run, or lies where its
///         path cannot be handed to the shell.
void RequireTool();
