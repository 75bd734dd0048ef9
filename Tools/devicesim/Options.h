#pragma once

#include <optional>
#include <stdexcept>
#include <string>

#include "Tools/devicesim/Simulator.h"

namespace devicesim {

/// what() is the message for the user.
class UsageError : public std::runtime_error {
 public:
    using std::runtime_error::runtime_error;
};

/// Reads the command line.
/// \param text  receives what --help prints, when the result is empty.
/// \throws UsageError
std::optional<Simulator::Settings> ParseOptions(int count, const char* const* words, std::string& text);

}  // namespace devicesim
