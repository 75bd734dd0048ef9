#pragma once

#include <string>

namespace krutein {

/// The backup password of a device, kept between runs as a salted hash in a file that only its owner may
/// read: $KRUTEIN_SAMPLE_STATE/<udid>.json, or below $XDG_STATE_HOME or ~/.local/state. A device without that
/// file has the empty password. All functions throw ToolError.
class StoredPassword {
 public:
    /// \param udid  of a device that exists.
    explicit StoredPassword(const std::string& udid);

    bool Is(const std::string& password) const;

    /// Replaces it at once or not at all.
    void Set(const std::string& password) const;

 private:
    std::string m_folder;
    std::string m_path;
};

}  // namespace krutein
