#pragma once

#include <cstddef>
#include <cstdlib>
#include <functional>
#include <memory>
#include <string>

/// Reading a whole file, with a word to say while it goes on. Internal.
namespace krutein {

struct FreeMemory {
    void operator()(void* memory) const { std::free(memory); }
};

struct FileContent {
    std::unique_ptr<char, FreeMemory> bytes;  ///< with a 0 behind them
    std::size_t size = 0;
};

/// What is read before it is told of; a piece that is shorter is the last one.
constexpr std::size_t kReadPieceBytes = std::size_t{8} * 1024 * 1024;

/// Reads what STD_FILE_ReadBufA reads.
/// \param content  receives it; after a failure what was told of, so that it stays until the caller drops it.
/// \param arrived  called after each piece, in their order; may be null.
bool ReadFile(std::string path, FileContent& content,
              const std::function<void(const char* piece, std::size_t bytes)>& arrived);

}  // namespace krutein
