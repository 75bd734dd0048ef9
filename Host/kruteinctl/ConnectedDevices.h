#pragma once

#include <string>
#include <vector>

#include "Host/kruteinctl/Question.h"

// Which devices are connected, as the device daemon tells.

/// The identifiers of all devices on this computer's ports, sorted.
/// \throws Failure (no daemon; device silent when the daemon has not answered by the deadline).
std::vector<std::string> ConnectedUdids(Question::Clock::time_point deadline);

/// The one connected device.
/// \throws Failure (no daemon, no device, several devices, device silent).
std::string OnlyConnectedUdid(Question::Clock::time_point deadline);

/// Whether a device is connected; false also when no daemon answers.
bool IsConnected(const std::string& udid, Question::Clock::time_point deadline);
