#pragma once

#include <string>
#include <vector>

// The data of the comparisons, the same on every run.

/// A folder for the data, removed at the end of the program.
const std::string& DataFolder();

/// The domain and path of the n-th file of a made-up device; one of a hundred belongs to the messages.
struct MadeFile {
    std::string domain;
    std::string path;
};
MadeFile FileNumber(int n);

/// Writes a backup's files, 1 KiB each, under their IDs, in folders or flat. \return the IDs of the messages.
std::vector<std::string> MakeTree(const std::string& folder, int files, bool flat);

/// A Manifest.mbdb of so many records.
void MakeMbdb(const std::string& path, int records);

/// A Manifest.db of so many rows, with a blob of some 300 bytes in each.
void MakeManifestDb(const std::string& path, int rows);

/// Adds the messages' database, with rows in it, to a backup that has a Manifest.db.
void MakeMessages(const std::string& backup);

/// Writes what is still in memory to the disk, so that no side pays for the making.
void Settle();
