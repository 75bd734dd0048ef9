#pragma once

#include <chrono>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace devicesim {

/// What a device can be told to do wrong.
enum class FaultKind {
    // with a key of the lockdown service's values
    kRefuse,     ///< the key may not be read
    kMissing,    ///< the device has no such key
    kWrongType,  ///< a number where a text belongs, and the other way round
    // with a place: a request, or one key of the request GetValue
    kLate,     ///< the answer takes a while
    kSilent,   ///< no answer, ever
    kHalf,     ///< the first half of the answer, then the connection ends
    kGarbage,  ///< an answer that is no property list
    kHuge,     ///< a length that no answer has, then the connection ends
    kDetach,   ///< the device is pulled out instead of answering
    // with a number
    kDropAfter,  ///< a lockdown connection ends after so many answers
    // alone
    kUnpaired,     ///< this computer has no pair record of the device
    kTrustDialog,  ///< unpaired, and its owner has not answered the question yet
    kNoTrust,      ///< unpaired, and its owner has said no
    kForgotten,    ///< the device does not know this computer's pair record any more
    kLocked,       ///< the device waits for its passcode
    kTlsSilence    ///< the session shall be encrypted, but the device says nothing then
};

/// A request, as its name stands in the message, and for GetValue perhaps one key: "GetValue.DeviceName".
struct Place {
    std::string request;
    std::string key;  ///< "" for any
};

struct Fault {
    FaultKind kind = FaultKind::kRefuse;
    std::string udid;  ///< "" for every device, and for the daemon itself
    std::string key;
    Place place;
    int count = 0;
    std::chrono::milliseconds delay{0};
};

/// what() names the words that were wrong.
class FaultError : public std::runtime_error {
 public:
    using std::runtime_error::runtime_error;
};

/// All faults of a run. It does not change once the run has begun, so any thread may ask.
class Faults {
 public:
    /// \param text  "[UDID/]NAME[=ARGUMENT]", such as "refuse=ProductVersion" or "late=GetValue:300".
    /// \throws FaultError
    void Add(const std::string& text);

    /// Whether a device has a fault that stands alone.
    bool Has(const std::string& udid, FaultKind kind) const;
    /// Whether a device has a fault at a key.
    bool HasAt(const std::string& udid, FaultKind kind, const std::string& key) const;
    /// The first fault of a device, or of the daemon for an empty udid, in the way of an answer.
    std::optional<Fault> OnAnswer(const std::string& udid, const Place& place) const;
    /// After how many answers a device drops its connection; nothing when it does not.
    std::optional<int> AnswersBeforeDrop(const std::string& udid) const;

    /// All faults with their arguments, for --help.
    static std::string Help();

 private:
    std::vector<Fault> m_faults;
};

}  // namespace devicesim
