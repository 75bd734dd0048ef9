// Manifest.mbdb: what was parsed is saved byte for byte, and reads as the same records again.

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>

#include "Module/BackupLib/mbdb/mbdb.h"
#include "Tests/fuzz/Fuzz.h"

namespace {

struct FreeCatalogue {
    void operator()(mbdb_t* mbdb) const { mbdb_free(mbdb); }
};
using Catalogue = std::unique_ptr<mbdb_t, FreeCatalogue>;

constexpr std::size_t kHeaderBytes = 6;

bool SameBytes(unsigned sizeA, const char* a, unsigned sizeB, const char* b) {
    if (sizeA != sizeB || (a == nullptr) != (b == nullptr)) return false;
    return a == nullptr || std::memcmp(a, b, sizeA) == 0;
}

bool SameProperties(const mbdb_record_t& a, const mbdb_record_t& b) {
    if (a.property_count != b.property_count) return false;
    for (unsigned i = 0; i < a.property_count; ++i) {
        const mbdb_property_t& p = *a.properties[i];
        const mbdb_property_t& q = *b.properties[i];
        if (!SameBytes(p.name_size, p.name, q.name_size, q.name) ||
            !SameBytes(p.value_size, p.value, q.value_size, q.value)) {
            return false;
        }
    }
    return true;
}

bool SameRecord(const mbdb_record_t& a, const mbdb_record_t& b) {
    return SameBytes(a.domain_size, a.domain, b.domain_size, b.domain) &&
           SameBytes(a.path_size, a.path, b.path_size, b.path) &&
           SameBytes(a.target_size, a.target, b.target_size, b.target) &&
           SameBytes(a.datahash_size, a.datahash, b.datahash_size, b.datahash) &&
           SameBytes(a.unknown1_size, a.unknown1, b.unknown1_size, b.unknown1) && a.mode == b.mode &&
           a.unknown2 == b.unknown2 && a.inode == b.inode && a.uid == b.uid && a.gid == b.gid &&
           a.time1 == b.time1 && a.time2 == b.time2 && a.time3 == b.time3 && a.length == b.length &&
           a.flag == b.flag && SameProperties(a, b);
}

bool HasNoZero(unsigned size, const char* value) {
    return value == nullptr || std::memchr(value, 0, size) == nullptr;
}

/// True for the records that MBDB_INSERT_COPY promises to copy whole: no value holds a zero byte, and no text
/// of a property is empty (an empty one is copied as absent).
bool CopiesWhole(const mbdb_record_t& record) {
    for (unsigned i = 0; i < record.property_count; ++i) {
        const mbdb_property_t& property = *record.properties[i];
        if (property.name_size == 0 || property.value_size == 0 ||
            !HasNoZero(property.name_size, property.name) ||
            !HasNoZero(property.value_size, property.value)) {
            return false;
        }
    }
    return HasNoZero(record.domain_size, record.domain) && HasNoZero(record.path_size, record.path) &&
           HasNoZero(record.target_size, record.target) && HasNoZero(record.datahash_size, record.datahash) &&
           HasNoZero(record.unknown1_size, record.unknown1);
}

/// Bytes of the image that were decoded.
std::size_t ParsedBytes(const mbdb_t& mbdb) {
    std::size_t bytes = kHeaderBytes;
    for (const mbdb_record_t* const record : mbdb.records)
        bytes += record->record_size;
    return bytes;
}

/// The record at the beginning of these bytes, decoded without knowing their end.
void CheckSingleRecord(const std::string& bytes, const mbdb_record_t& expected) {
    const ExactCopy copy(bytes);
    mbdb_record_t* const record = mbdb_record_parse(copy.Data());
    Require(record != nullptr && SameRecord(*record, expected) && record->record_size == bytes.size(),
            "a record decodes by itself as it does in its catalogue");
    mbdb_record_debug(record);
    mbdb_record_free(record);
}

void CheckSaving(mbdb_t& mbdb, const std::string& image, const ScratchFile& file) {
    Require(mbdb_save(&mbdb, file.Path().c_str()), "what was parsed can be saved");
    const std::size_t parsed = ParsedBytes(mbdb);
    Require(parsed <= image.size() && file.Read() == image.substr(0, parsed),
            "what was decoded is saved byte for byte");
    const Catalogue again(mbdb_open(file.Path().c_str()));
    Require(again != nullptr && again->records.size() == mbdb.records.size(),
            "a saved catalogue has the same number of records");
    for (std::size_t i = 0; i < mbdb.records.size(); ++i)
        Require(SameRecord(*mbdb.records[i], *again->records[i]), "a saved record reads as it was");
}

void CheckCopies(mbdb_t& mbdb) {
    const std::size_t count = mbdb.records.size();
    for (std::size_t i = 0; i < count; ++i) {
        const mbdb_record_t* const copy = mbdb_insert_record(&mbdb, mbdb.records[i], MBDB_INSERT_COPY);
        Require(copy != nullptr && copy == mbdb.records.back(), "a copy is appended");
        Require(!CopiesWhole(*mbdb.records[i]) || SameRecord(*mbdb.records[i], *copy),
                "a copy equals its original");
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const ScratchFile file("Manifest.mbdb");
    const std::string image = FuzzInput(data, size).Rest();
    const ExactCopy bytes(image);
    const Catalogue mbdb(mbdb_parse(bytes.Data(), static_cast<unsigned>(size)));
    const bool isCatalogue = size >= kHeaderBytes && std::memcmp(data, "mbdb\5\0", kHeaderBytes) == 0;
    Require((mbdb != nullptr) == isCatalogue, "what begins with the header is a catalogue, nothing else is");
    if (mbdb == nullptr) return 0;
    if (!mbdb->records.empty()) {
        CheckSingleRecord(image.substr(kHeaderBytes, mbdb->records[0]->record_size), *mbdb->records[0]);
    }
    CheckSaving(*mbdb, image, file);
    CheckCopies(*mbdb);
    return 0;
}
