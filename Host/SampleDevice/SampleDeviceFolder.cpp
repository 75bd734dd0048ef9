#include "Host/SampleDevice/SampleDeviceFolder.h"

#include <dirent.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <memory>
#include <system_error>

#include "Common/std/std_objc.h"

namespace krutein {
namespace {

constexpr char kExtension[] = ".json";
constexpr std::size_t kExtensionChars = sizeof kExtension - 1;
/// Contents/<folder>/<program> lies so many levels below the bundle.
constexpr int kLevelsBelowBundle = 3;

struct CloseFolder {
    void operator()(DIR* folder) const { closedir(folder); }
};

std::string PathIn(const std::string& folder, const std::string& name) {
    return folder + "/" + name;
}

bool IsDescription(const std::string& name) {
    return name.size() > kExtensionChars && name.front() != '.' &&
           name.compare(name.size() - kExtensionChars, kExtensionChars, kExtension) == 0;
}

/// The names of the descriptions, sorted.
/// \return 0, or the error number when the folder cannot be read.
int ReadNames(const std::string& path, std::vector<std::string>& names) {
    const std::unique_ptr<DIR, CloseFolder> folder(opendir(path.c_str()));
    if (folder == nullptr) return errno;
    for (errno = 0; const dirent* entry = readdir(folder.get());) {
        if (IsDescription(entry->d_name)) names.emplace_back(entry->d_name);
        errno = 0;
    }
    std::sort(names.begin(), names.end());
    return errno;
}

}  // namespace

std::string SampleDevicesFolder() {
    const char* const chosen = std::getenv(kSampleDevicesVariable);
    if (chosen != nullptr && *chosen != '\0') return chosen;
    std::string bundle = STD_OBJC_GetCurrentAppPath();
    for (int level = 0; level < kLevelsBelowBundle; ++level) {
        const std::size_t slash = bundle.rfind('/');
        bundle.resize(slash == std::string::npos ? 0 : slash);
    }
    return bundle + "/Resources/SampleDevices";
}

std::optional<SampleDevice> FindSampleDevice(const std::string& folder, const std::string& udid) {
    // Names are compared, not opened: a UDID from outside never becomes part of a path.
    std::vector<std::string> names;
    ReadNames(folder, names);
    const std::string wanted = udid + kExtension;
    if (std::find(names.begin(), names.end(), wanted) == names.end()) return std::nullopt;
    return LoadSampleDevice(PathIn(folder, wanted));
}

SampleDeviceList ListSampleDevices(const std::string& folder) {
    SampleDeviceList list;
    std::vector<std::string> names;
    if (const int error = ReadNames(folder, names)) {
        list.problems.push_back(folder + ": cannot be read: " + std::generic_category().message(error));
    }
    for (const std::string& name : names) {
        try {
            list.devices.push_back(LoadSampleDevice(PathIn(folder, name)));
        } catch (const SampleDeviceError& error) {
            list.problems.emplace_back(error.what());
        }
    }
    return list;
}

}  // namespace krutein
