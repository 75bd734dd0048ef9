#pragma once

#include <chrono>
#include <optional>
#include <string>

enum class CommandName { kBackup, kRestore, kSize, kList, kFiles, kVerify, kShow, kDevices, kInfo };

enum class Output { kPeople, kQuiet, kJson };

/// What the user asked for.
struct Options {
    CommandName command = CommandName::kBackup;
    std::string udid;         ///< "" for the only connected device
    std::string folder;       ///< to back up to, or to look in; for kFiles also a catalogue
    std::string types;        ///< of a typed backup, as typed; "" for a full one through the facade
    bool dryRun = false;      ///< tells what a typed backup would keep, from a backup in `folder`
    bool keepFailed = false;  ///< leaves what a failed typed backup has made
    bool force = false;       ///< restores also what was not made for it
    std::string domain;       ///< a part of the domains that are wanted; "" for all
    std::string path;         ///< the same of paths
    bool watch = false;       ///< goes on telling what changes
    Output output = Output::kPeople;
    /// For the answers of a device.
    std::chrono::seconds timeout{30};
};

/// The name of a command as it is typed.
const char* NameOf(CommandName command);

/// Reads the command line.
/// \param text  receives what --help and --version print, when the result is empty.
/// \throws Failure (usage).
std::optional<Options> ParseOptions(int count, const char* const* words, std::string& text);

/// True when --json is among the words; for failures of the parsing itself.
bool WantsJson(int count, const char* const* words);
