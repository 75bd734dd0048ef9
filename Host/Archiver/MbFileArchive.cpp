#include "Host/Archiver/MbFileArchive.h"

#include <plist/plist.h>

#include "Host/Archiver/EntryAttributes.h"
#include "Host/Archiver/Plist.h"

namespace krutein {
namespace {

// The places of the archive's objects.
constexpr std::uint8_t kRootUid = 1;
constexpr std::uint8_t kPathUid = 2;
constexpr std::uint8_t kClassUid = 3;
constexpr std::uint8_t kTargetUid = 4;

constexpr std::uint64_t kArchiveVersion = 100'000;

plist_t NewRoot(const CatalogueEntry& entry) {
    const EntryAttributes attributes = AttributesOf(entry);
    plist_t const root = plist_new_dict();
    const auto set = [root](const char* key, std::uint64_t value) {
        plist_dict_set_item(root, key, plist_new_uint(value));
    };
    set("LastModified", attributes.time);
    set("Flags", 0);
    set("GroupID", attributes.user);
    set("LastStatusChange", attributes.time);
    set("Birth", attributes.time);
    set("Size", static_cast<std::uint64_t>(entry.size));
    set("InodeNumber", attributes.inode);
    set("Mode", attributes.mode);
    set("UserID", attributes.user);
    set("ProtectionClass", attributes.protectionClass);
    plist_dict_set_item(root, "RelativePath", plist_new_uid(kPathUid));
    plist_dict_set_item(root, "$class", plist_new_uid(kClassUid));
    if (entry.kind == EntryKind::kLink) plist_dict_set_item(root, "Target", plist_new_uid(kTargetUid));
    return root;
}

plist_t NewClass() {
    plist_t const names = plist_new_array();
    plist_array_append_item(names, plist_new_string("MBFile"));
    plist_array_append_item(names, plist_new_string("NSObject"));
    plist_t const description = plist_new_dict();
    plist_dict_set_item(description, "$classname", plist_new_string("MBFile"));
    plist_dict_set_item(description, "$classes", names);
    return description;
}

plist_t NewObjects(const CatalogueEntry& entry) {
    plist_t const objects = plist_new_array();
    plist_array_append_item(objects, plist_new_string("$null"));
    plist_array_append_item(objects, NewRoot(entry));
    plist_array_append_item(objects, plist_new_string(entry.path.c_str()));
    plist_array_append_item(objects, NewClass());
    if (entry.kind == EntryKind::kLink) {
        plist_array_append_item(objects, plist_new_string(entry.linkTarget.c_str()));
    }
    return objects;
}

}  // namespace

std::string EncodeMbFile(const CatalogueEntry& entry) {
    Plist archive;
    archive.Set("$version", plist_new_uint(kArchiveVersion));
    archive.Set("$archiver", "NSKeyedArchiver");
    plist_t const top = plist_new_dict();
    plist_dict_set_item(top, "root", plist_new_uid(kRootUid));
    archive.Set("$top", top);
    archive.Set("$objects", NewObjects(entry));
    return archive.ToBinary();
}

}  // namespace krutein
