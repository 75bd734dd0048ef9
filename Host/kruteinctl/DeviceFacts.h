#pragma once

#include <cstdint>
#include <string>

#include "Host/kruteinctl/Question.h"

/// What a connected device says of itself. Texts that it does not tell are empty, sizes 0.
struct DeviceFacts {
    std::string udid;
    std::string name;
    std::string productType;
    std::string systemVersion;
    std::string serialNumber;
    std::uint64_t totalBytes = 0;
    std::uint64_t availableBytes = 0;

    /// Whether the two sizes can be true.
    bool KnowsStorage() const { return totalBytes > 0 && availableBytes <= totalBytes; }
    std::uint64_t UsedBytes() const { return totalBytes - availableBytes; }
};

/// Asks a connected device, through the library's device object. A device that does not know this computer
/// yet asks its owner whether to trust it.
/// \throws Failure (no daemon, no device, not paired, locked, gone, silent).
DeviceFacts AskFacts(const std::string& udid, Question::Clock::time_point deadline);

/// What a device tells everybody, without being asked to trust this computer: name, model and version.
/// \return empty texts when it does not answer.
DeviceFacts AskPublicFacts(const std::string& udid);
