#include <cstdint>
#include <string>
#include <utility>

#include "Host/Archiver/contents/Contents.h"
#include "Host/Archiver/contents/People.h"
#include "Host/Archiver/contents/Random.h"

namespace krutein {
namespace {

constexpr char kPeopleSchema[] = R"(
    CREATE TABLE ABPerson (ROWID INTEGER PRIMARY KEY AUTOINCREMENT, First TEXT, Last TEXT, Middle TEXT,
        Organization TEXT, Department TEXT, JobTitle TEXT, Nickname TEXT, Prefix TEXT, Suffix TEXT, Note TEXT,
        Birthday TEXT, Kind INTEGER, CreationDate INTEGER, ModificationDate INTEGER, guid TEXT);
    CREATE TABLE ABMultiValue (UID INTEGER PRIMARY KEY, record_id INTEGER, property INTEGER,
        identifier INTEGER, label INTEGER, value TEXT, guid TEXT);
    CREATE TABLE ABMultiValueLabel (value TEXT, UNIQUE (value));
    CREATE INDEX ABMultiValueRecordIDIndex ON ABMultiValue (record_id);
    INSERT INTO ABMultiValueLabel (rowid, value) VALUES (1, '_$!<Mobile>!$_'), (2, '_$!<Home>!$_');)";

constexpr char kImagesSchema[] = R"(
    CREATE TABLE ABFullSizeImage (ROWID INTEGER PRIMARY KEY AUTOINCREMENT, record_id INTEGER, crop_x INTEGER,
        crop_y INTEGER, crop_width INTEGER, crop_height INTEGER, data BLOB);
    CREATE TABLE ABThumbnailImage (ROWID INTEGER PRIMARY KEY AUTOINCREMENT, record_id INTEGER, format INTEGER,
        derived_from_format INTEGER, data BLOB);
    CREATE UNIQUE INDEX ABFullSizeImageRecordIndex ON ABFullSizeImage (record_id);
    CREATE UNIQUE INDEX ABThumbnailImageRecordIndex ON ABThumbnailImage (record_id, format);)";

constexpr std::int64_t kPhoneProperty = 3;
constexpr std::int64_t kMailProperty = 4;
constexpr std::int64_t kMobileLabel = 1;
constexpr std::int64_t kHomeLabel = 2;

constexpr std::int64_t kImageBytes = 12 * std::int64_t{1024};
constexpr std::int64_t kThumbnailBytes = 2 * std::int64_t{1024};

void FillPeople(const SampleDevice& device, Database& database) {
    database.Execute(kPeopleSchema);
    Statement person = database.Prepare(
        "INSERT INTO ABPerson (ROWID, First, Last, Kind, CreationDate, ModificationDate, guid) "
        "VALUES (?, ?, ?, 0, ?, ?, ?)");
    Statement value = database.Prepare(
        "INSERT INTO ABMultiValue (record_id, property, identifier, label, value, guid) "
        "VALUES (?, ?, 0, ?, ?, ?)");
    Random random(device.udid + "contacts");
    const std::int64_t created = SecondsSince2001(kFirstMessageTime);
    for (std::int64_t i = 0; i < device.contacts.count; ++i) {
        const Person known = PersonAt(i);
        const std::int64_t record = i + 1;
        person.Run(record, known.firstName, known.lastName, created, created + i, random.Uuid());
        value.Run(record, kPhoneProperty, kMobileLabel, known.phone, random.Uuid());
        value.Run(record, kMailProperty, kHomeLabel, known.email, random.Uuid());
    }
}

std::string Picture(const SampleDevice& device, const char* use, std::int64_t record, std::int64_t size) {
    const std::uint64_t seed = SeedOf(device.udid + use + std::to_string(record));
    return FileBytes(FileBytes::Kind::kPicture, size, seed).All();
}

void FillImages(const SampleDevice& device, Database& database) {
    database.Execute(kImagesSchema);
    Statement image = database.Prepare(
        "INSERT INTO ABFullSizeImage (record_id, crop_x, crop_y, crop_width, crop_height, data) "
        "VALUES (?, 0, 0, 320, 320, ?)");
    Statement thumbnail = database.Prepare(
        "INSERT INTO ABThumbnailImage (record_id, format, derived_from_format, data) VALUES (?, 0, 0, ?)");
    for (std::int64_t record = 1; record <= device.contacts.images; ++record) {
        const std::string full = Picture(device, "image", record, kImageBytes);
        const std::string small = Picture(device, "thumbnail", record, kThumbnailBytes);
        image.Run(record, Statement::Blob{full});
        thumbnail.Run(record, Statement::Blob{small});
    }
}

}  // namespace

void PlayContacts(const SampleDevice& device, ContentReceiver& receiver) {
    if (device.contacts.count == 0) return;
    receiver.OnDatabase({kHomeDomain, "Library/AddressBook/AddressBook.sqlitedb"},
                        [&](Database& database) { FillPeople(device, database); });
    receiver.OnDatabase({kHomeDomain, "Library/AddressBook/AddressBookImages.sqlitedb"},
                        [&](Database& database) { FillImages(device, database); });
}

}  // namespace krutein
