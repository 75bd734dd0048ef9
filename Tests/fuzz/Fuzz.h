#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

/// What the fuzz targets share. A target is one source file with the entry that libFuzzer calls; in a build
/// without libFuzzer a main of our own (replay.cpp) calls it with the files of the checked-in corpus.

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

/// Ends the program with a message that names the property.
[[noreturn]] void Fail(const char* property);

/// The same when the property does not hold.
inline void Require(bool holds, const char* property) {
    if (!holds) Fail(property);
}

/// The input, taken from its beginning. Whatever is asked for behind its end is zero or empty.
class FuzzInput {
 public:
    FuzzInput(const std::uint8_t* data, std::size_t size)
        : m_next(reinterpret_cast<const char*>(data)), m_left(size) {}

    bool IsEmpty() const { return m_left == 0; }
    std::uint8_t Byte();
    /// Up to the next line end, which is taken too and not part of the text.
    std::string Line();
    /// The same, as a text without a NUL: it ends in front of the first one.
    std::string TextLine();
    std::string Rest();
    std::string TextRest();

 private:
    const char* m_next;
    std::size_t m_left;
};

/// A copy of bytes in a heap block of exactly their size, so that AddressSanitizer sees a read beyond it.
class ExactCopy {
 public:
    explicit ExactCopy(const std::string& bytes);
    ~ExactCopy();
    ExactCopy(const ExactCopy&) = delete;
    ExactCopy& operator=(const ExactCopy&) = delete;

    unsigned char* Data() const { return m_data; }
    std::size_t Size() const { return m_size; }

 private:
    unsigned char* m_data;
    std::size_t m_size;
};

/// A file below $TMPDIR for what can be read from and written to a path only; removed at the end. One is used
/// for all inputs of a run.
class ScratchFile {
 public:
    explicit ScratchFile(const std::string& name);
    ~ScratchFile();
    ScratchFile(const ScratchFile&) = delete;
    ScratchFile& operator=(const ScratchFile&) = delete;

    const std::string& Folder() const { return m_folder; }
    const std::string& Path() const { return m_path; }
    void Write(const std::string& content) const;
    std::string Read() const;

 private:
    std::string m_folder;
    std::string m_path;
};

/// Upper case to lower case, ASCII only.
std::string AsciiLower(std::string text);

/// True when all bytes are ASCII and none of them is one of `others`.
bool IsAsciiWithout(const std::string& text, const char* others);
