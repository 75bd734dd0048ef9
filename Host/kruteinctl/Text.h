#pragma once

#include <chrono>
#include <cstdint>
#include <string>

// Texts for people.

/// "1.2 GB" (powers of 1000), "812 bytes".
std::string HumanBytes(std::uint64_t bytes);

/// "1.2 GB (1234567890 bytes)"; "812 bytes".
std::string ExactBytes(std::uint64_t bytes);

/// "0:07", "12:30", "1:02:03".
std::string HumanTime(std::chrono::seconds time);

/// The text with everything that a terminal might take for a command, and all broken UTF-8, replaced by '?':
/// names come from devices and file systems.
std::string Printable(const std::string& text);

/// The text with its ASCII letters in lower case.
std::string LowerCase(std::string text);

/// How many columns a printable UTF-8 text takes.
std::size_t Columns(const std::string& text);

/// The text with its middle replaced by "…" where it takes more than `columns` columns.
std::string Shortened(const std::string& text, std::size_t columns);
