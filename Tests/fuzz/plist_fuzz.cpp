// The column "file" of a Manifest.db: any bytes are read without a crash, and what the sample backup tool
// writes of an entry is read as that entry.

#include <string>

#include "Host/Archiver/EntryAttributes.h"
#include "Host/Archiver/MbFileArchive.h"
#include "Host/BackupFormat/BinaryPlistReader.h"
#include "Host/BackupFormat/FileId.h"
#include "Host/BackupFormat/MbFile.h"
#include "Tests/fuzz/Fuzz.h"

namespace {

using krutein::BinaryPlistReader;
using krutein::CatalogueEntry;
using krutein::EntryKind;

void ReadEverything(const BinaryPlistReader& plist) {
    for (BinaryPlistReader::Object object = 0; object < 64; ++object) {
        const auto text = plist.Text(object);
        if (text) Require(text->size() < SIZE_MAX / 2, "a text lies in the bytes");
        if (text && !text->empty()) plist.Member(plist.Top(), *text);
        plist.Number(object);
        plist.Bool(object);
        plist.Uid(object);
        plist.Element(object, object);
        plist.Element(plist.Top(), object);
    }
}

void ReadAny(const std::string& bytes) {
    const ExactCopy copy(bytes);
    const std::string_view view(reinterpret_cast<const char*>(copy.Data()), copy.Size());
    if (const auto plist = BinaryPlistReader::Open(view)) ReadEverything(*plist);
    if (const auto file = krutein::ReadMbFile(view)) {
        Require(file->size >= 0 && file->mode <= 0xFFFF, "a size is not negative, a mode has 16 bits");
    }
}

void WriteAndRead(FuzzInput& input) {
    CatalogueEntry entry{};
    const EntryKind kinds[] = {EntryKind::kFile, EntryKind::kFolder, EntryKind::kLink};
    entry.kind = kinds[input.Byte() % 3];
    std::int64_t size = 0;
    for (unsigned i = 0; i < 8; ++i)
        size = static_cast<std::int64_t>(static_cast<std::uint64_t>(size) << 8U | input.Byte());
    entry.size = size < 0 ? ~size : size;
    entry.domain = input.Line();
    entry.path = input.Line();
    entry.linkTarget = input.Line();
    entry.fileId = krutein::FileId::Of(entry.domain, entry.path).Text();
    const std::string archive = krutein::EncodeMbFile(entry);
    const auto read = krutein::ReadMbFile(archive);
    Require(read.has_value(), "what the tool writes can be read");
    Require(read->size == entry.size && read->mode == krutein::AttributesOf(entry).mode,
            "size and mode survive");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzInput input(data, size);
    if ((input.Byte() & 1) == 0) {
        ReadAny(input.Rest());
    } else {
        WriteAndRead(input);
    }
    return 0;
}
