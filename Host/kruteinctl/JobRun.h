#pragma once

#include <string>

#include "Host/kruteinctl/Session.h"
#include "Module/BackupLib/BaseDevice.h"

/// A typed backup through the library's manager, from its start to its end.
/// \param folder      destination.
/// \param keepFailed  leaves the folder of a job that failed or was stopped.
/// \return            the folder of the job, with the record in it.
/// \throws Failure when it fails or is stopped; in both cases no tool runs any more, and what was there
///         before is as it was.
std::string RunJob(Session& session, IBaseDevice& device, const std::string& folder, int type,
                   bool keepFailed);
