#include "Module/BackupLib/mbdb/mbdb_record.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "Module/BackupLib/mbdb/cursor.h"
#include "Module/BackupLib/mbdb/mbdb_format.h"
#include "Module/BackupLib/mbdb/record_codec.h"

namespace krutein::mbdb {
namespace {

/// malloc with a message.
void* Allocate(std::size_t bytes) {
    void* const memory = std::malloc(bytes);
    if (memory == nullptr) std::puts("Allocation Error!");
    return memory;
}

/// A copy of the bytes with `terminator` (0 or 1) zero bytes behind it; null without memory.
char* CopyBytes(const void* bytes, std::size_t size, std::size_t terminator) {
    auto* const copy = static_cast<char*>(Allocate(std::max<std::size_t>(size + terminator, 1)));
    if (copy == nullptr) return nullptr;
    std::memcpy(copy, bytes, size);
    std::memset(copy + size, 0, terminator);
    return copy;
}

// Decoding.

bool TakeBytes(Cursor& cursor, std::uint16_t size, std::size_t terminator, char*& value) {
    const unsigned char* const bytes = cursor.Take(size);
    if (bytes == nullptr) return false;
    value = CopyBytes(bytes, size, terminator);
    return value != nullptr;
}

/// A string of a record, for which two lengths mean that it is absent.
bool TakeString(Cursor& cursor, std::uint16_t& size, char*& value, std::size_t terminator = 1) {
    if (!cursor.TakeU16(size)) return false;
    return IsAbsent(size) || TakeBytes(cursor, size, terminator, value);
}

/// A name or value of a property, whose length is always taken literally.
bool TakeCounted(Cursor& cursor, std::uint16_t& size, char*& value) {
    return cursor.TakeU16(size) && TakeBytes(cursor, size, 1, value);
}

template <typename Unsigned>
void Next(const unsigned char*& bytes, Unsigned& value) {
    value = FromBigEndian<Unsigned>(bytes);
    bytes += sizeof value;
}

bool TakeFixed(Cursor& cursor, mbdb_record_t& record) {
    const unsigned char* bytes = cursor.Take(kFixedBytes);
    if (bytes == nullptr) return false;
    Next(bytes, record.mode);
    Next(bytes, record.unknown2);
    Next(bytes, record.inode);
    Next(bytes, record.uid);
    Next(bytes, record.gid);
    Next(bytes, record.time1);
    Next(bytes, record.time2);
    Next(bytes, record.time3);
    Next(bytes, record.length);
    Next(bytes, record.flag);
    Next(bytes, record.property_count);
    return true;
}

mbdb_property_t* NewProperty() {
    auto* const property = static_cast<mbdb_property_t*>(Allocate(sizeof(mbdb_property_t)));
    if (property != nullptr) *property = {};
    return property;
}

/// Room for the record's properties, none of which is there yet.
bool MakeProperties(mbdb_record_t& record) {
    if (record.property_count == 0) return true;
    // An array of pointers.
    const std::size_t bytes =
        record.property_count * sizeof(mbdb_property_t*);  // NOLINT(bugprone-sizeof-expression)
    record.properties = static_cast<mbdb_property_t**>(Allocate(bytes));
    if (record.properties == nullptr) return false;
    std::memset(record.properties, 0, bytes);
    return true;
}

bool TakeProperties(Cursor& cursor, mbdb_record_t& record) {
    if (!MakeProperties(record)) return false;
    for (std::size_t i = 0; i < record.property_count; ++i) {
        mbdb_property_t* const property = record.properties[i] = NewProperty();
        if (property == nullptr || !TakeCounted(cursor, property->name_size, property->name) ||
            !TakeCounted(cursor, property->value_size, property->value)) {
            return false;
        }
    }
    return true;
}

bool Decode(Cursor& cursor, mbdb_record_t& record) {
    const std::size_t size = cursor.Left();
    const bool whole = TakeString(cursor, record.domain_size, record.domain) &&
                       TakeString(cursor, record.path_size, record.path) &&
                       TakeString(cursor, record.target_size, record.target) &&
                       TakeString(cursor, record.datahash_size, record.datahash, 0) &&
                       TakeString(cursor, record.unknown1_size, record.unknown1) &&
                       TakeFixed(cursor, record) && TakeProperties(cursor, record);
    record.record_size = static_cast<std::uint32_t>(size - cursor.Left());
    return whole;
}

// Encoding.

std::size_t BytesOf(std::uint16_t size, const char* value) {
    return kLengthBytes + (value == nullptr ? 0U : size);
}

unsigned char* PutString(unsigned char* to, std::uint16_t size, const char* value) {
    to = ToBigEndian(to, size);
    if (value == nullptr) return to;
    std::memcpy(to, value, size);
    return to + size;
}

unsigned char* PutFixed(unsigned char* to, const mbdb_record_t& record) {
    to = ToBigEndian(to, record.mode);
    for (const std::uint32_t value :
         {record.unknown2, record.inode, record.uid, record.gid, record.time1, record.time2, record.time3}) {
        to = ToBigEndian(to, value);
    }
    to = ToBigEndian(to, record.length);
    to = ToBigEndian(to, record.flag);
    return ToBigEndian(to, record.property_count);
}

// Copying.

/// Gives the copy a buffer of its own for a value that it has shared with the original so far. A text is
/// taken up to its NUL; an empty one, which may also be a hash that begins with a zero byte, is taken as long
/// as its size says.
/// \param limit  bytes of the value that may be looked at.
bool CopyValue(std::uint16_t& size, char*& value, std::uint32_t& recordSize, std::size_t limit) {
    if (value == nullptr) return true;
    const std::size_t text = strnlen(value, std::min(limit, kMaxTextBytes));
    const std::size_t stored = IsAbsent(size) ? 0 : size;
    value = CopyBytes(value, text == 0 ? stored : text, 1);
    if (text > 0) size = static_cast<std::uint16_t>(text);
    recordSize += static_cast<std::uint32_t>(text);
    return value != nullptr;
}

/// For values that end in a NUL.
bool CopyString(std::uint16_t& size, char*& value, std::uint32_t& recordSize) {
    return CopyValue(size, value, recordSize, kMaxTextBytes);
}

/// For values that need not: no more is looked at than there is.
bool CopyBlob(std::uint16_t& size, char*& value, std::uint32_t& recordSize) {
    return CopyValue(size, value, recordSize, IsAbsent(size) ? kMaxTextBytes : size);
}

bool CopyText(const char* text, std::uint16_t& size, char*& copy) {
    if (text == nullptr || *text == '\0') return true;
    const std::size_t length = std::min(std::strlen(text), kMaxTextBytes);
    copy = CopyBytes(text, length, 1);
    if (copy != nullptr) size = static_cast<std::uint16_t>(length);
    return copy != nullptr;
}

bool CopyProperties(const mbdb_record_t& from, mbdb_record_t& to) {
    if (!MakeProperties(to)) return false;
    for (std::size_t i = 0; i < to.property_count; ++i) {
        const mbdb_property_t* const original = from.properties[i];
        mbdb_property_t* const copy = to.properties[i] = NewProperty();
        if (copy == nullptr || !CopyText(original->name, copy->name_size, copy->name) ||
            !CopyText(original->value, copy->value_size, copy->value)) {
            return false;
        }
    }
    return true;
}

// Setting.

/// Replaces a value. The new one is copied before the old one is freed: it may be the old one.
void SetValue(mbdb_record_t& record, std::uint16_t& size, char*& value, const char* given,
              std::size_t givenBytes, std::size_t terminator, std::uint16_t sizeOfNone) {
    const std::size_t bytes = given == nullptr ? 0 : std::min(givenBytes, kMaxTextBytes);
    char* const copy = bytes == 0 ? nullptr : CopyBytes(given, bytes, terminator);
    std::free(value);
    if (!IsAbsent(size)) record.record_size -= size;
    value = copy;
    size = copy == nullptr ? sizeOfNone : static_cast<std::uint16_t>(bytes);
    if (copy != nullptr) record.record_size += static_cast<std::uint32_t>(bytes);
}

std::size_t LengthOf(const char* text) {
    return text == nullptr ? 0 : std::strlen(text);
}

/// A text for printf; also one without a NUL of its own.
const char* Shown(const char* text) {
    return text == nullptr ? "(null)" : text;
}

}  // namespace

mbdb_record_t* DecodeRecord(const unsigned char* data, std::size_t size) {
    mbdb_record_t* const record = mbdb_record_create();
    if (record == nullptr) {
        std::puts("Unable to parse mbdb record");
        return nullptr;
    }
    Cursor cursor(data, size);
    if (Decode(cursor, *record)) return record;
    mbdb_record_free(record);
    return nullptr;
}

std::size_t EncodedBytes(const mbdb_record_t& record) {
    std::size_t bytes = kFixedBytes + BytesOf(record.domain_size, record.domain) +
                        BytesOf(record.path_size, record.path) + BytesOf(record.target_size, record.target) +
                        BytesOf(record.datahash_size, record.datahash) +
                        BytesOf(record.unknown1_size, record.unknown1);
    for (std::size_t i = 0; i < record.property_count; ++i) {
        const mbdb_property_t& property = *record.properties[i];
        bytes += BytesOf(property.name_size, property.name) + BytesOf(property.value_size, property.value);
    }
    return bytes;
}

unsigned char* EncodeRecord(const mbdb_record_t& record, unsigned char* to) {
    to = PutString(to, record.domain_size, record.domain);
    to = PutString(to, record.path_size, record.path);
    to = PutString(to, record.target_size, record.target);
    to = PutString(to, record.datahash_size, record.datahash);
    to = PutString(to, record.unknown1_size, record.unknown1);
    to = PutFixed(to, record);
    for (std::size_t i = 0; i < record.property_count; ++i) {
        const mbdb_property_t& property = *record.properties[i];
        to = PutString(to, property.name_size, property.name);
        to = PutString(to, property.value_size, property.value);
    }
    return to;
}

mbdb_record_t* CopyRecord(const mbdb_record_t& record) {
    mbdb_record_t* const copy = mbdb_record_create();
    if (copy == nullptr) return nullptr;
    *copy = record;
    copy->properties = nullptr;
    // All values are copied before anything is freed, so that a failure leaves none shared.
    bool whole = CopyString(copy->path_size, copy->path, copy->record_size);
    whole = CopyString(copy->domain_size, copy->domain, copy->record_size) && whole;
    whole = CopyString(copy->target_size, copy->target, copy->record_size) && whole;
    whole = CopyBlob(copy->datahash_size, copy->datahash, copy->record_size) && whole;
    whole = CopyBlob(copy->unknown1_size, copy->unknown1, copy->record_size) && whole;
    if (whole && CopyProperties(record, *copy)) return copy;
    mbdb_record_free(copy);
    return nullptr;
}

}  // namespace krutein::mbdb

using krutein::mbdb::kAbsent;
using krutein::mbdb::kEmpty;
using krutein::mbdb::LengthOf;
using krutein::mbdb::SetValue;
using krutein::mbdb::Shown;

mbdb_record_t* mbdb_record_create() {
    auto* const record = static_cast<mbdb_record_t*>(std::calloc(1, sizeof(mbdb_record_t)));
    if (record == nullptr) std::puts("Allocation Error!");
    return record;
}

mbdb_record_t* mbdb_record_parse(unsigned char* data) {
    return krutein::mbdb::DecodeRecord(data, SIZE_MAX);
}

void mbdb_record_free(mbdb_record_t* record) {
    if (record == nullptr) return;
    for (char* const value :
         {record->domain, record->path, record->target, record->datahash, record->unknown1}) {
        std::free(value);
    }
    for (std::size_t i = 0; record->properties != nullptr && i < record->property_count; ++i) {
        mbdb_property_t* const property = record->properties[i];
        if (property == nullptr) continue;
        std::free(property->name);
        std::free(property->value);
        std::free(property);
    }
    std::free(record->properties);
    std::free(record);
}

void mbdb_record_init(mbdb_record_t* record) {
    if (record == nullptr) return;
    *record = {};
    record->target_size = record->datahash_size = record->unknown1_size = kAbsent;
    record->record_size = static_cast<std::uint32_t>(krutein::mbdb::kSmallestRecordBytes);
}

void mbdb_record_debug(mbdb_record_t* record) {
    if (record == nullptr) return;
    const int unknown1Chars = record->unknown1 == nullptr ? 6 : record->unknown1_size;
    std::puts("mbdb record");
    std::printf("\tdomain = %s\n", Shown(record->domain));
    std::printf("\tpath = %s\n", Shown(record->path));
    std::printf("\ttarget = %s\n", Shown(record->target));
    std::printf("\tdatahash = %p\n", static_cast<void*>(record->datahash));
    std::printf("\tunknown1 = %.*s\n", unknown1Chars, Shown(record->unknown1));
    std::printf("\tmode = 0%o (0x%x)\n", static_cast<unsigned>(record->mode),
                static_cast<unsigned>(record->mode));
    std::printf("\tunknown2 = 0x%x\n", record->unknown2);
    std::printf("\tinode = 0x%x\n", record->inode);
    std::printf("\tuid = %d\n", static_cast<int>(record->uid));
    std::printf("\tgid = %d\n", static_cast<int>(record->gid));
    std::printf("\ttime1 = 0x%x\n", record->time1);
    std::printf("\ttime2 = 0x%x\n", record->time2);
    std::printf("\ttime3 = 0x%x\n", record->time3);
    std::printf("\tlength = %llu\n", static_cast<unsigned long long>(record->length));
    std::printf("\tflag = 0x%x\n", static_cast<unsigned>(record->flag));
    std::printf("\tproperty_count = %d\n", static_cast<int>(record->property_count));
}

void mbdb_record_set_domain(mbdb_record_t* record, const char* domain) {
    if (record == nullptr) return;
    SetValue(*record, record->domain_size, record->domain, domain, LengthOf(domain), 1, kEmpty);
}

void mbdb_record_set_path(mbdb_record_t* record, const char* path) {
    if (record == nullptr) return;
    SetValue(*record, record->path_size, record->path, path, LengthOf(path), 1, kEmpty);
}

void mbdb_record_set_target(mbdb_record_t* record, const char* target) {
    if (record == nullptr) return;
    SetValue(*record, record->target_size, record->target, target, LengthOf(target), 1, kAbsent);
}

void mbdb_record_set_datahash(mbdb_record_t* record, const char* hash, unsigned short size) {
    if (record == nullptr) return;
    SetValue(*record, record->datahash_size, record->datahash, hash, size, 0, kAbsent);
}

void mbdb_record_set_unknown1(mbdb_record_t* record, const char* value, unsigned short size) {
    if (record == nullptr) return;
    SetValue(*record, record->unknown1_size, record->unknown1, value, size, 0, kAbsent);
}

void mbdb_record_set_mode(mbdb_record_t* record, unsigned short mode) {
    if (record != nullptr) record->mode = mode;
}

void mbdb_record_set_unknown2(mbdb_record_t* record, unsigned int value) {
    if (record != nullptr) record->unknown2 = value;
}

void mbdb_record_set_inode(mbdb_record_t* record, unsigned int inode) {
    if (record != nullptr) record->inode = inode;
}

void mbdb_record_set_uid(mbdb_record_t* record, unsigned int uid) {
    if (record != nullptr) record->uid = uid;
}

void mbdb_record_set_gid(mbdb_record_t* record, unsigned int gid) {
    if (record != nullptr) record->gid = gid;
}

void mbdb_record_set_time1(mbdb_record_t* record, unsigned int time) {
    if (record != nullptr) record->time1 = time;
}

void mbdb_record_set_time2(mbdb_record_t* record, unsigned int time) {
    if (record != nullptr) record->time2 = time;
}

void mbdb_record_set_time3(mbdb_record_t* record, unsigned int time) {
    if (record != nullptr) record->time3 = time;
}

void mbdb_record_set_length(mbdb_record_t* record, unsigned long long length) {
    if (record != nullptr) record->length = length;
}

void mbdb_record_set_flag(mbdb_record_t* record, unsigned char flag) {
    if (record != nullptr) record->flag = flag;
}
