#pragma once

#include <functional>
#include <string>

#include "Host/Archiver/Database.h"
#include "Host/Archiver/contents/FileBytes.h"
#include "Host/SampleDevice/SampleDevice.h"

/// What is on a sample device. Each kind of content is one function that tells a receiver file by file what
/// there is, always the same in the same order; nothing of it is kept in memory.
namespace krutein {

/// Where a file is on the device.
struct DeviceFile {
    std::string domain;
    std::string path;  ///< relative to the domain's folder
};

using FillDatabase = std::function<void(Database&)>;

class ContentReceiver {
 public:
    virtual ~ContentReceiver() = default;

    virtual void OnFile(const DeviceFile& file, FileBytes bytes) = 0;
    /// A file that is a database. Who wants it calls `fill` with a new one, or else does without.
    virtual void OnDatabase(const DeviceFile& file, const FillDatabase& fill) = 0;
    virtual void OnLink(const DeviceFile& link, const std::string& target) = 0;
};

constexpr char kHomeDomain[] = "HomeDomain";
constexpr char kMediaDomain[] = "MediaDomain";
constexpr char kSettingsFolder[] = "Library/Preferences/";
constexpr char kAppDomainPrefix[] = "AppDomain-";  ///< followed by the app's bundle ID

/// Everything on the device.
void PlayContents(const SampleDevice& device, ContentReceiver& receiver);

/// How many files PlayContents tells of.
int CountFiles(const SampleDevice& device);

// The kinds of content that PlayContents puts together.
void PlaySettings(const SampleDevice& device, ContentReceiver& receiver);
void PlayMessages(const SampleDevice& device, ContentReceiver& receiver);
void PlayWhatsApp(const SampleDevice& device, ContentReceiver& receiver);
void PlayWeChat(const SampleDevice& device, ContentReceiver& receiver);
void PlayContacts(const SampleDevice& device, ContentReceiver& receiver);
void PlayPhotos(const SampleDevice& device, ContentReceiver& receiver);
void PlayOtherFiles(const SampleDevice& device, ContentReceiver& receiver);

}  // namespace krutein
