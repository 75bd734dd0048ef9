#pragma once

#include <string>
#include <vector>

/// The one of the known words that was most likely meant by a mistyped one; "" when none is near.
std::string ClosestWord(const std::string& word, const std::vector<std::string>& known);

/// ": did you mean 'backup'?", or "" when none is near.
std::string Suggestion(const std::string& word, const std::vector<std::string>& known);
