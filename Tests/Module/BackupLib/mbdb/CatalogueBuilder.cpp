#include "Tests/Module/BackupLib/mbdb/CatalogueBuilder.h"

#include <cstring>

namespace {

std::string BigEndian(std::uint64_t value, int bytes) {
    std::string text;
    for (int i = bytes - 1; i >= 0; --i)
        text.push_back(static_cast<char>(value >> (8 * i)));
    return text;
}

std::string Counted(const std::string& text) {
    return BigEndian(text.size(), 2) + text;
}

std::string Written(const MbdbText& text) {
    return text ? Counted(*text) : std::string("\xFF\xFF");
}

}  // namespace

std::string MbdbRecordBytes::Bytes() const {
    std::string bytes =
        Written(domain) + Written(path) + Written(target) + Written(datahash) + Written(unknown1);
    bytes += BigEndian(mode, 2);
    for (const std::uint32_t value : {unknown2, inode, uid, gid, time1, time2, time3})
        bytes += BigEndian(value, 4);
    bytes += BigEndian(length, 8) + BigEndian(flag, 1) + BigEndian(properties.size(), 1);
    for (const auto& [name, value] : properties)
        bytes += Counted(name) + Counted(value);
    return bytes;
}

MbdbRecordBytes MbdbRecordBytes::Smallest() {
    MbdbRecordBytes record;
    record.domain = record.path = record.target = record.datahash = record.unknown1 = std::nullopt;
    record.mode = 0;
    record.inode = record.uid = record.gid = record.time1 = record.time2 = record.time3 = 0;
    record.length = 0;
    record.flag = 0;
    return record;
}

std::string MbdbBytes(const std::vector<MbdbRecordBytes>& records) {
    std::string bytes = kMbdbHeader;
    for (const MbdbRecordBytes& record : records)
        bytes += record.Bytes();
    return bytes;
}

Mbdb ParseMbdb(const std::string& bytes) {
    const std::unique_ptr<unsigned char[]> exact(new unsigned char[bytes.size()]);
    std::memcpy(exact.get(), bytes.data(), bytes.size());
    return {mbdb_parse(exact.get(), static_cast<unsigned>(bytes.size())), mbdb_free};
}
