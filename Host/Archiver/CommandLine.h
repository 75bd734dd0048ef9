#pragma once

#include <stdexcept>
#include <string>

namespace krutein {

enum class Verb { kBackup, kRestore, kInfo, kChangePassword, kRestoreSettings };

/// What the library asks for. Options that the verb does not have are empty or 0.
struct CommandLine {
    Verb verb = Verb::kBackup;
    std::string backupPath;  ///< the folder that holds a folder for each device
    std::string source;      ///< the device whose backup it is
    std::string target;      ///< the connected device
    std::string oldPassword;
    std::string newPassword;
    std::string version;    ///< the backup protocol's; all are treated alike
    int pipe = -1;          ///< the descriptor for messages
    int model = 0;          ///< the kind of device for the library's own books; not used
    int restoreOption = 0;  ///< not used: everything is restored
};

/// what() names the wrong word.
class CommandLineError : public std::runtime_error {
 public:
    using std::runtime_error::runtime_error;
};

/// \param argument  the words of the command, with '|' between them.
/// \throws CommandLineError
CommandLine ParseCommandLine(const std::string& argument);

/// How the tool is called, in some lines.
std::string UsageText();

}  // namespace krutein
