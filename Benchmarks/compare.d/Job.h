#pragma once

#include <string>

/// Runs a small job for messages through the backup manager of this process, so that what belongs to a job
/// can be called afterwards. \return the folder of the device's backup, which the manager now takes for its
/// own.
std::string RunSmallJob(const std::string& destination, bool oldLayout);
