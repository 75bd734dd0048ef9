#include "Module/BackupLib/mbdb/mbdb.h"

#include <sys/stat.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <future>
#include <memory>
#include <new>
#include <utility>

#include "Module/BackupLib/mbdb/mbdb_format.h"
#include "Module/BackupLib/mbdb/record_codec.h"

namespace {

using krutein::mbdb::kHeader;
using krutein::mbdb::kHeaderBytes;

constexpr std::size_t kPieceBytes = std::size_t{1024} * 1024;

struct CloseStream {
    void operator()(FILE* file) const { std::fclose(file); }
};
using Stream = std::unique_ptr<FILE, CloseStream>;

struct FreeMemory {
    void operator()(void* memory) const { std::free(memory); }
};
using Bytes = std::unique_ptr<unsigned char, FreeMemory>;

struct FreeCatalogue {
    void operator()(mbdb_t* mbdb) const { mbdb_free(mbdb); }
};
using Catalogue = std::unique_ptr<mbdb_t, FreeCatalogue>;

Bytes Allocate(std::size_t bytes) {
    return Bytes(static_cast<unsigned char*>(std::malloc(bytes)));
}

bool HasHeader(const unsigned char* bytes) {
    return bytes != nullptr && std::memcmp(bytes, kHeader, kHeaderBytes) == 0;
}

/// Takes the record over. \return false, with the record freed, without memory.
bool Append(mbdb_t& mbdb, mbdb_record_t* record) {
    try {
        mbdb.records.push_back(record);
        return true;
    } catch (const std::bad_alloc&) {
        mbdb_record_free(record);
        return false;
    }
}

/// Decodes the records of the catalogue's image until its end or until one does not decode.
void ParseRecords(mbdb_t& mbdb) {
    std::size_t offset = kHeaderBytes;
    while (offset < mbdb.size) {
        mbdb_record_t* const record = krutein::mbdb::DecodeRecord(mbdb.data + offset, mbdb.size - offset);
        const std::size_t recordBytes = record == nullptr ? 0 : record->record_size;
        if (record == nullptr || !Append(mbdb, record)) {
            std::printf("Unable to parse record at offset 0x%x!\n", static_cast<unsigned>(offset));
            return;
        }
        offset += recordBytes;
    }
}

/// An empty catalogue with the header of an image; null, with a message, when it is none.
Catalogue Begin(const unsigned char* data, std::size_t size) {
    Catalogue mbdb(mbdb_create());
    if (mbdb == nullptr) {
        std::puts("Unable to create mbdb");
        return nullptr;
    }
    if (size < kHeaderBytes || !HasHeader(data)) {
        std::puts("Unable to identify this filetype");
        return nullptr;
    }
    mbdb->header = Allocate(kHeaderBytes).release();
    if (mbdb->header == nullptr) {
        std::puts("Allocation error");
        return nullptr;
    }
    std::memcpy(mbdb->header, data, kHeaderBytes);
    return mbdb;
}

/// The catalogue of an image that it takes over.
Catalogue ParseImage(Bytes image, unsigned int size) {
    Catalogue mbdb = Begin(image.get(), size);
    if (mbdb == nullptr) return nullptr;
    mbdb->data = image.release();
    mbdb->size = size;
    ParseRecords(*mbdb);
    return mbdb;
}

/// Opening a pipe would wait for somebody to write into it.
bool IsPipe(const char* path) {
    struct stat info {};
    return stat(path, &info) == 0 && S_ISFIFO(info.st_mode);
}

/// Length of a file, of which the low 32 bits count; 0 for folders and what has no length.
unsigned int LengthOf(FILE* file) {
    struct stat info {};
    if (fstat(fileno(file), &info) != 0 || S_ISDIR(info.st_mode) || fseeko(file, 0, SEEK_END) != 0) return 0;
    const long long length = ftello(file);
    std::rewind(file);
    return length < 0 ? 0U : static_cast<unsigned int>(length);
}

struct Piece {
    Bytes bytes;
    std::size_t capacity = 0;
    std::size_t used = 0;

    /// Makes room for so many bytes in an empty piece. \return false without memory.
    bool Reserve(std::size_t count) {
        if (count <= capacity) return true;
        bytes = Allocate(count);
        capacity = bytes == nullptr ? 0 : count;
        return bytes != nullptr;
    }
};

/// Puts records one behind the other and writes them in large pieces, each while the next one is filled: a
/// million records lie scattered in memory, and collecting them takes as long as writing.
class RecordWriter {
 public:
    explicit RecordWriter(FILE* file) : m_file(file) {}
    ~RecordWriter() {
        AwaitWriting();
        Write(m_filled);
    }
    RecordWriter(const RecordWriter&) = delete;
    RecordWriter& operator=(const RecordWriter&) = delete;

    /// \return false without memory.
    bool Put(const mbdb_record_t& record) {
        const std::size_t bytes = krutein::mbdb::EncodedBytes(record);
        if (bytes > m_filled.capacity - m_filled.used && !MakeRoom(bytes)) return false;
        krutein::mbdb::EncodeRecord(record, m_filled.bytes.get() + m_filled.used);
        m_filled.used += bytes;
        return true;
    }

 private:
    bool MakeRoom(std::size_t bytes) {
        AwaitWriting();
        std::swap(m_filled, m_written);
        if (m_written.used > 0) StartWriting();
        m_filled.used = 0;
        return m_filled.Reserve(std::max(bytes, kPieceBytes));
    }

    void StartWriting() {
        try {
            m_writing = std::async(std::launch::async, [this] { Write(m_written); });
        } catch (const std::exception&) {
            Write(m_written);  // no thread to be had
        }
    }

    void AwaitWriting() {
        if (m_writing.valid()) m_writing.get();
    }

    void Write(const Piece& piece) {
        if (piece.used > 0) std::fwrite(piece.bytes.get(), 1, piece.used, m_file);
    }

    FILE* m_file;
    Piece m_filled;   ///< being filled
    Piece m_written;  ///< being written, or free
    std::future<void> m_writing;
};

}  // namespace

mbdb_t* mbdb_create() {
    return new (std::nothrow) mbdb_t{};
}

mbdb_t* mbdb_parse(unsigned char* data, unsigned int size) {
    Catalogue mbdb = Begin(data, size);
    if (mbdb == nullptr) return nullptr;
    mbdb->data = Allocate(size).release();
    if (mbdb->data == nullptr) {
        std::puts("Allocation Error!!");
        return nullptr;
    }
    std::memcpy(mbdb->data, data, size);
    mbdb->size = size;
    ParseRecords(*mbdb);
    return mbdb.release();
}

mbdb_t* mbdb_open(const char* path) {
    const Stream file(path == nullptr || IsPipe(path) ? nullptr : std::fopen(path, "rb"));
    if (file == nullptr) return nullptr;
    const unsigned int size = LengthOf(file.get());
    if (size == 0) return nullptr;
    Catalogue mbdb;
    Bytes image = Allocate(size);
    // The image is handed over, not copied: catalogues have up to millions of records.
    if (image != nullptr && std::fread(image.get(), 1, size, file.get()) == size) {
        mbdb = ParseImage(std::move(image), size);
    }
    if (mbdb == nullptr) std::puts("Unable to parse mbdb file");
    return mbdb.release();
}

mbdb_t* mbdb_openw(const wchar_t* /*path*/) {
    return nullptr;
}

mbdb_record_t* mbdb_get_record(mbdb_t* /*mbdb*/, unsigned int /*index*/) {
    return nullptr;
}

void mbdb_free(mbdb_t* mbdb) {
    if (mbdb == nullptr) return;
    std::free(mbdb->header);
    for (mbdb_record_t* const record : mbdb->records)
        mbdb_record_free(record);
    std::free(mbdb->data);
    delete mbdb;
}

char* mbdb_strdup(const char* text) {
    if (text == nullptr) return nullptr;
    const std::size_t bytes = std::strlen(text) + 1;
    auto* const copy = static_cast<char*>(std::malloc(bytes));
    if (copy != nullptr) std::memcpy(copy, text, bytes);
    return copy;
}

bool mbdb_save(mbdb_t* mbdb, const char* path) {
    if (mbdb == nullptr || !HasHeader(mbdb->header)) {
        std::puts("Unable to identify this filetype");
        return false;
    }
    const Stream file(path == nullptr ? nullptr : std::fopen(path, "wb"));
    if (file == nullptr) return false;
    std::fwrite(mbdb->header, 1, kHeaderBytes, file.get());
    RecordWriter writer(file.get());
    for (const mbdb_record_t* const record : mbdb->records) {
        if (!writer.Put(*record)) return false;
    }
    return true;
}

mbdb_record_t* mbdb_insert_record(mbdb_t* mbdb, mbdb_record_t* record, en_mbdb_insert_record_type type) {
    if (mbdb == nullptr || record == nullptr) return nullptr;
    if (type == MBDB_INSERT_ATTACH) {
        Append(*mbdb, record);
        return nullptr;
    }
    if (type != MBDB_INSERT_COPY) return nullptr;
    mbdb_record_t* const copy = krutein::mbdb::CopyRecord(*record);
    return copy != nullptr && Append(*mbdb, copy) ? copy : nullptr;
}
