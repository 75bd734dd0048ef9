#include <cstdint>
#include <iterator>
#include <string>

#include "Host/Archiver/contents/Contents.h"
#include "Host/Archiver/contents/People.h"
#include "Host/Archiver/contents/Random.h"
#include "Host/Archiver/contents/Turns.h"

// Photos and the files of no particular app: what makes a backup large.
namespace krutein {
namespace {

constexpr std::int64_t kPhotosInFolder = 9999;  // four digits, from 1
constexpr std::int64_t kFirstPhotoFolder = 100;

constexpr std::int64_t kFilesInFolder = 500;

/// Places for other files, with all that names on a device may hold.
struct Place {
    const char* domain;
    const char* folder;
    const char* stem;
    const char* extension;
    FileBytes::Kind kind;
};

constexpr Place kPlaces[] = {
    {"AppDomain-com.example.notes", "Documents/Notes", "Note ", ".txt", FileBytes::Kind::kText},
    {"AppDomain-com.example.reader", "Documents/Bücher", "Straße nach Süden ", ".epub",
     FileBytes::Kind::kData},
    {"AppDomain-com.example.maps", "Library/Application Support/Tiles", "tile-", ".bin",
     FileBytes::Kind::kData},
    {"AppDomain-com.example.memo", "Documents/备忘录", "语音 ", ".m4a", FileBytes::Kind::kData},
    {"AppDomain-com.example.sketch", "Documents/My drawings", "Sketch #", ".jpg", FileBytes::Kind::kPicture},
    {kHomeDomain, "Library/Calendar/Attachments", "Einladung & Plan ", ".ics", FileBytes::Kind::kText},
    {kHomeDomain, "Library/Mail/Saved 📎", "attachment-", ".dat", FileBytes::Kind::kData},
};

std::string PathAt(const Place& place, std::int64_t number) {
    const std::string folder = "/" + Padded(number / kFilesInFolder + 1, 3) + "/";
    return place.folder + folder + place.stem + Padded(number + 1, 4) + place.extension;
}

FileBytes MadeUp(FileBytes::Kind kind, std::int64_t size, const SampleDevice& device,
                 const DeviceFile& file) {
    return {kind, size, SeedOf(device.udid + file.domain + file.path)};
}

}  // namespace

void PlayPhotos(const SampleDevice& device, ContentReceiver& receiver) {
    for (std::int64_t i = 0; i < device.photos.count; ++i) {
        const std::string folder = std::to_string(kFirstPhotoFolder + i / kPhotosInFolder) + "APPLE/";
        const DeviceFile file{"CameraRollDomain",
                              "Media/DCIM/" + folder + PictureName(i % kPhotosInFolder + 1)};
        receiver.OnFile(file, MadeUp(FileBytes::Kind::kPicture, device.photos.bytesEach, device, file));
    }
}

/// Folder by folder. The first of all is empty, as some files always are.
void PlayOtherFiles(const SampleDevice& device, ContentReceiver& receiver) {
    const Turns turns{device.other.count, static_cast<std::int64_t>(std::size(kPlaces))};
    for (std::size_t p = 0; p < std::size(kPlaces); ++p) {
        const Place& place = kPlaces[p];
        const std::int64_t count = turns.CountIn(static_cast<std::int64_t>(p));
        for (std::int64_t i = 0; i < count; ++i) {
            const DeviceFile file{place.domain, PathAt(place, i)};
            const std::int64_t size = p == 0 && i == 0 ? 0 : device.other.bytesEach;
            receiver.OnFile(file, MadeUp(place.kind, size, device, file));
        }
    }
}

}  // namespace krutein
