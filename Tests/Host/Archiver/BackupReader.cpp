#include "Tests/Host/Archiver/BackupReader.h"

#include <gtest/gtest.h>
#include <plist/plist.h>
#include <sqlite3.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <utility>

#include "Common/std/std_sha1.h"
#include "Tests/support/TemporaryFolder.h"

namespace fs = std::filesystem;

namespace {

using Values = std::map<std::string, std::string>;

Row ReadRow(sqlite3_stmt* statement) {
    Row row;
    for (int column = 0; column < sqlite3_column_count(statement); ++column) {
        const auto* const bytes = static_cast<const char*>(sqlite3_column_blob(statement, column));
        const auto count = static_cast<std::size_t>(sqlite3_column_bytes(statement, column));
        row.emplace_back(bytes == nullptr ? std::string() : std::string(bytes, count));
    }
    return row;
}

std::string TextOf(plist_t node) {
    std::uint64_t number = 0;
    std::uint8_t flag = 0;
    std::int32_t seconds = 0;
    std::int32_t microseconds = 0;
    switch (plist_get_node_type(node)) {
        case PLIST_STRING:
            return plist_get_string_ptr(node, nullptr);
        case PLIST_UINT:
            plist_get_uint_val(node, &number);
            return std::to_string(number);
        case PLIST_UID:
            plist_get_uid_val(node, &number);
            return "UID " + std::to_string(number);
        case PLIST_BOOLEAN:
            plist_get_bool_val(node, &flag);
            return flag != 0 ? "true" : "false";
        case PLIST_DATE:
            plist_get_date_val(node, &seconds, &microseconds);
            return std::to_string(seconds);
        default:
            return "?";
    }
}

void Collect(plist_t node, const std::string& prefix, Values& values);

void CollectDictionary(plist_t dictionary, const std::string& prefix, Values& values) {
    plist_dict_iter next = nullptr;
    plist_dict_new_iter(dictionary, &next);
    const std::unique_ptr<void, void (*)(void*)> owner(next, &std::free);
    for (;;) {
        char* key = nullptr;
        plist_t value = nullptr;
        plist_dict_next_item(dictionary, next, &key, &value);
        if (key == nullptr) return;
        const std::string name = prefix + key;
        std::free(key);
        Collect(value, name, values);
    }
}

/// A number behind the prefix stands for an array's element.
void Collect(plist_t node, const std::string& prefix, Values& values) {
    if (plist_get_node_type(node) == PLIST_DICT) {
        CollectDictionary(node, prefix.empty() ? "" : prefix + "/", values);
    } else if (plist_get_node_type(node) == PLIST_ARRAY) {
        for (std::uint32_t i = 0; i < plist_array_get_size(node); ++i)
            Collect(plist_array_get_item(node, i), prefix + "/" + std::to_string(i), values);
    } else {
        values[prefix] = TextOf(node);
    }
}

Values ReadPlistBytes(const std::string& bytes) {
    plist_t root = nullptr;
    plist_from_memory(bytes.data(), static_cast<std::uint32_t>(bytes.size()), &root);
    if (root == nullptr) return {};
    const std::unique_ptr<void, void (*)(plist_t)> owner(root, &plist_free);
    Values values;
    Collect(root, "", values);
    return values;
}

/// Takes the values of records of a Manifest.mbdb one after the other. What is read behind the end is 0.
class MbdbCursor {
 public:
    explicit MbdbCursor(const std::string& bytes) : m_bytes(bytes) {}

    bool AtEnd() const { return m_next >= m_bytes.size(); }
    bool IsBehindEnd() const { return m_next > m_bytes.size(); }

    std::uint64_t Number(int bytes) {
        std::uint64_t number = 0;
        for (int i = 0; i < bytes; ++i, ++m_next) {
            const char byte = m_next < m_bytes.size() ? m_bytes[m_next] : '\0';
            number = number << 8U | static_cast<unsigned char>(byte);
        }
        return number;
    }

    std::string Text() {
        const std::uint64_t length = Number(2);
        if (length == 0xFFFF) return {};
        std::string text = m_bytes.substr(std::min(m_next, m_bytes.size()), length);
        m_next += length;
        return text;
    }

 private:
    const std::string& m_bytes;
    std::size_t m_next = 6;
};

int FlagsOf(std::uint64_t mode) {
    switch (mode & 0xF000U) {
        case 0x8000:
            return 1;
        case 0x4000:
            return 2;
        case 0xA000:
            return 4;
        default:
            return 0;
    }
}

ListedEntry ReadMbdbRecord(MbdbCursor& cursor) {
    ListedEntry entry;
    entry.domain = cursor.Text();
    entry.path = cursor.Text();
    entry.fileId = STD_FILE_CalcDomainPathSha1A(entry.domain, entry.path);
    entry.file["RelativePath"] = entry.path;
    entry.file["Target"] = cursor.Text();
    entry.file["Digest"] = cursor.Text();
    entry.file["unknown1"] = cursor.Text();
    const std::uint64_t mode = cursor.Number(2);
    entry.flags = FlagsOf(mode);
    entry.file["Mode"] = std::to_string(mode);
    constexpr std::pair<const char*, int> kNumbers[] = {
        {"unknown2", 4}, {"InodeNumber", 4},      {"UserID", 4}, {"GroupID", 4},         {"LastModified", 4},
        {"Birth", 4},    {"LastStatusChange", 4}, {"Size", 8},   {"ProtectionClass", 1}, {"properties", 1}};
    for (const auto& [name, bytes] : kNumbers)
        entry.file[name] = std::to_string(cursor.Number(bytes));
    EXPECT_EQ(entry.file["properties"], "0") << "properties are not read here";
    return entry;
}

std::vector<ListedEntry> ReadMbdb(const std::string& bytes) {
    EXPECT_EQ(bytes.substr(0, 6), std::string("mbdb\x05\0", 6));
    std::vector<ListedEntry> entries;
    MbdbCursor cursor(bytes);
    while (!cursor.AtEnd())
        entries.push_back(ReadMbdbRecord(cursor));
    EXPECT_FALSE(cursor.IsBehindEnd()) << "the last record is cut";
    return entries;
}

}  // namespace

std::vector<Row> Query(const std::string& database, const std::string& sql) {
    sqlite3* handle = nullptr;
    EXPECT_EQ(sqlite3_open_v2(database.c_str(), &handle, SQLITE_OPEN_READWRITE, nullptr), SQLITE_OK)
        << database;
    const std::unique_ptr<sqlite3, int (*)(sqlite3*)> owner(handle, &sqlite3_close_v2);
    sqlite3_stmt* statement = nullptr;
    EXPECT_EQ(sqlite3_prepare_v2(handle, sql.c_str(), -1, &statement, nullptr), SQLITE_OK)
        << sql << ": " << sqlite3_errmsg(handle);
    const std::unique_ptr<sqlite3_stmt, int (*)(sqlite3_stmt*)> statementOwner(statement, &sqlite3_finalize);
    std::vector<Row> rows;
    int result = 0;
    while ((result = sqlite3_step(statement)) == SQLITE_ROW)
        rows.push_back(ReadRow(statement));
    EXPECT_EQ(result, SQLITE_DONE) << sql << ": " << sqlite3_errmsg(handle);
    return rows;
}

std::string QueryOne(const std::string& database, const std::string& sql) {
    const std::vector<Row> rows = Query(database, sql);
    if (rows.size() == 1 && rows[0].size() == 1) return rows[0][0];
    ADD_FAILURE() << sql << " has not one value";
    return {};
}

std::map<std::string, std::string> ReadPlist(const std::string& path) {
    Values values = ReadPlistBytes(ReadWholeFile(path));
    EXPECT_FALSE(values.empty()) << path << " is no property list";
    return values;
}

std::map<std::string, std::string> ReadArchive(const std::string& bytes) {
    const Values values = ReadPlistBytes(bytes);
    const auto at = [&](const std::string& key) {
        const auto found = values.find(key);
        return found == values.end() ? std::string() : found->second;
    };
    if (at("$archiver") != "NSKeyedArchiver" || at("$version") != "100000") return {};
    const std::string prefix = "$objects/" + at("$top/root").substr(4) + "/";
    Values object;
    for (const auto& [key, value] : values) {
        if (key.compare(0, prefix.size(), prefix) != 0) continue;
        const bool isUid = value.compare(0, 4, "UID ") == 0;
        const std::string target = isUid ? "$objects/" + value.substr(4) : "";
        const std::string name = key.substr(prefix.size());
        object[name] = !isUid ? value : name == "$class" ? at(target + "/$classname") : at(target);
    }
    return object;
}

std::int64_t ListedEntry::Size() const {
    return std::stoll(file.at("Size"));
}

std::vector<ListedEntry> ReadCatalogue(const std::string& backup) {
    if (fs::exists(backup + "/Manifest.mbdb")) return ReadMbdb(ReadWholeFile(backup + "/Manifest.mbdb"));
    std::vector<ListedEntry> entries;
    for (const Row& row :
         Query(backup + "/Manifest.db", "SELECT fileID, domain, relativePath, flags, file FROM Files")) {
        entries.push_back({row[0], row[1], row[2], std::stoi(row[3]), ReadArchive(row[4])});
    }
    return entries;
}

std::map<std::string, std::string> ReadTree(const std::string& folder) {
    std::map<std::string, std::string> tree;
    for (const auto& entry : fs::recursive_directory_iterator(folder)) {
        if (entry.is_regular_file()) {
            tree[fs::relative(entry.path(), folder).string()] = ReadWholeFile(entry.path().string());
        }
    }
    return tree;
}
