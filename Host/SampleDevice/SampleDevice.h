#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>

namespace krutein {

/// A device that exists only as a description: what it says of itself, and how much of what it holds. All
/// counts and sizes are within the bounds that LoadSampleDevice checks.
struct SampleDevice {
    struct Disk {
        std::int64_t totalBytes = 0;
        std::int64_t availableBytes = 0;
    };
    /// Files of one size each.
    struct Files {
        std::int64_t count = 0;
        std::int64_t bytesEach = 0;
    };
    struct Messages {
        std::int64_t chats = 0;
        std::int64_t count = 0;            ///< in all chats together
        std::int64_t attachments = 0;      ///< at most one for each message
        std::int64_t attachmentBytes = 0;  ///< of each attachment
    };
    struct WhatsApp {
        std::int64_t chats = 0;
        std::int64_t messages = 0;  ///< in all chats together
    };
    struct WeChat {
        std::int64_t accounts = 0;
        std::int64_t chats = 0;     ///< of all accounts together
        std::int64_t messages = 0;  ///< in all chats together
    };
    struct Contacts {
        std::int64_t count = 0;
        std::int64_t images = 0;  ///< the first so many contacts have one
    };

    std::string udid;
    std::string name;
    std::string productType;
    std::string systemVersion;  ///< one to three numbers with dots: "17.4.1"
    std::string buildVersion;
    std::string serialNumber;
    std::string phoneNumber;  ///< "" when it has none
    Disk disk;

    Files photos;
    Messages messages;
    WhatsApp whatsApp;
    WeChat weChat;
    Contacts contacts;
    Files other;

    /// The first number of the system version: 17.
    int MajorVersion() const;
};

/// A description that cannot be used: what() names the file, the field and the reason.
class SampleDeviceError : public std::runtime_error {
 public:
    using std::runtime_error::runtime_error;
};

/// Reads a description, a JSON file that is named for the device's UDID. All fields must be there but
/// phoneNumber and the sections of contents, which count as zero; unknown fields are errors, so that a
/// misspelt one is noticed.
/// \throws SampleDeviceError
SampleDevice LoadSampleDevice(const std::string& path);

}  // namespace krutein
