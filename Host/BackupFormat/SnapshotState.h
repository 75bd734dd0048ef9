#pragma once

#include <string_view>

namespace krutein {

// How far a backup is: a key of its Status.plist. Only this tells a finished backup from an interrupted one.
constexpr char kSnapshotStateKey[] = "SnapshotState";
constexpr char kFinishedState[] = "finished";
constexpr char kUploadingState[] = "uploading";

/// True when these bytes, which may be any, are the Status.plist of a finished backup.
bool SaysFinished(std::string_view status);

}  // namespace krutein
