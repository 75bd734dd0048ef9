#pragma once

#include <string>

namespace krutein {

/// A path as a URI for SQLite, with nothing in it that would end it or be decoded; options go behind it.
std::string SqliteUri(const std::string& path);

}  // namespace krutein
