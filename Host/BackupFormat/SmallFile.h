#pragma once

#include <cstddef>
#include <string>

namespace krutein {

/// The content of one of the files that lie beside a backup's catalogue. Somebody may have tampered with it:
/// no link is followed, and nothing but a file of at most so many bytes is read. \return "" when there is no
/// such file.
std::string ReadSmallFile(const std::string& path, std::size_t maxBytes);

}  // namespace krutein
