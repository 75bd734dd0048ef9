#pragma once

#include <map>
#include <optional>
#include <string>

/// INI files as their syntax is described: by patterns for scanf that are tried one after the other. Slow and
/// plain, for comparing.
namespace IniReference {

/// Keys as the dictionary has them. Sections have no value.
using Entries = std::map<std::string, std::optional<std::string>>;

/// \return false when any line is no INI syntax.
bool Read(const std::string& content, Entries& entries);

}  // namespace IniReference
