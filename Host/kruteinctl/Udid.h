#pragma once

#include <string>

/// A device's identifier in the form that devices themselves use: 40 lower-case hexadecimal digits, or 8 and
/// 16 upper-case ones with a dash between. Accepts any case, and the second form without its dash. \throws
/// Failure (usage) for anything else.
std::string CanonicalUdid(const std::string& text);
