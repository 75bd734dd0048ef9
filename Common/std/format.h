#pragma once

#include <string>

#include "Common/Export.h"

namespace krutein {

/// Formats a command line. Unlike STD_FormatA it does not cut: a command that was cut would do something else
/// than was asked.
/// \param out  the whole text; empty when the result is false.
/// \return false when the text would be longer than kFormatMaxChars.
bool FormatWhole(std::string& out, const char* format, ...) KRUTEIN_PRINTF(2, 3);

}  // namespace krutein
