#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

// What kruteinctl printed.

std::vector<std::string> Lines(const std::string& text);

/// Every line as an object; a failed test where one is none.
std::vector<nlohmann::json> Objects(const std::string& text);
