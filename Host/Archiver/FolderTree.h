#pragma once

#include <cstdint>
#include <functional>
#include <string>

/// Folders with all that is in them. Links are never followed. All functions look at the stop flag; those
/// that fail throw ToolError.
namespace krutein {

/// Creates the folder and the missing ones above it.
void MakeFolders(const std::string& path);

/// Calls `visit` with each name in an open folder, in no certain order.
/// \param path  the folder's path for messages.
void ForEachName(int folder, const std::string& path, const std::function<void(const std::string&)>& visit);

/// Empties an open folder except for one name.
/// \param path  the folder's path for messages.
void RemoveAllBut(int folder, const std::string& keep, const std::string& path);

struct TreeSize {
    std::int64_t files = 0;
    std::int64_t bytes = 0;
};

/// The regular files in a folder and all folders below it.
TreeSize MeasureTree(const std::string& path);

}  // namespace krutein
