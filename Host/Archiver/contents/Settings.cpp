#include <string>
#include <vector>

#include "Host/Archiver/Plist.h"
#include "Host/Archiver/contents/Contents.h"
#include "Host/Archiver/contents/Random.h"

namespace krutein {
namespace {

constexpr const char* kSettings[] = {
    "com.apple.Accessibility", "com.apple.Maps",         "com.apple.Preferences", "com.apple.camera",
    "com.apple.keyboard",      "com.apple.locationd",    "com.apple.mobilecal",   "com.apple.mobilemail",
    "com.apple.mobilephone",   "com.apple.mobilesafari", "com.apple.mobiletimer", "com.apple.springboard",
};

std::string SettingsOf(const SampleDevice& device, const std::string& name) {
    Random random(device.udid + name);
    Plist settings;
    settings.Set("DeviceName", device.name);
    settings.Set("HasBeenOpened", random.Below(2) == 1);
    settings.Set("LastSession", random.Uuid());
    settings.Set("Languages", std::vector<std::string>{"en-GB", "de-DE", "zh-Hans"});
    return settings.ToBinary();
}

}  // namespace

/// Every device has settings, whatever else it holds.
void PlaySettings(const SampleDevice& device, ContentReceiver& receiver) {
    for (const char* const name : kSettings) {
        const DeviceFile file{kHomeDomain, std::string(kSettingsFolder) + name + ".plist"};
        receiver.OnFile(file, FileBytes(SettingsOf(device, name)));
    }
    receiver.OnLink({kHomeDomain, "Library/Preferences/Defaults.plist"}, "com.apple.Preferences.plist");
    receiver.OnLink({kHomeDomain, "Library/Logs"}, "../Logs");
}

}  // namespace krutein
