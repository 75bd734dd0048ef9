#include "Tests/fuzz/Fuzz.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>

namespace {

using Stream = std::unique_ptr<FILE, int (*)(FILE*)>;

Stream Open(const std::string& path, const char* mode) {
    Stream file(std::fopen(path.c_str(), mode), &std::fclose);
    Require(file != nullptr, "the scratch file can be opened");
    return file;
}

std::string UpToNul(const std::string& bytes) {
    return bytes.substr(0, bytes.find('\0'));
}

}  // namespace

void Fail(const char* property) {
    std::fprintf(stderr, "does not hold: %s\n", property);
    std::abort();
}

std::uint8_t FuzzInput::Byte() {
    if (m_left == 0) return 0;
    --m_left;
    return static_cast<std::uint8_t>(*m_next++);
}

std::string FuzzInput::Line() {
    const char* const end =
        m_left == 0 ? nullptr : static_cast<const char*>(std::memchr(m_next, '\n', m_left));
    if (end == nullptr) return Rest();
    std::string line(m_next, end);
    m_left -= line.size() + 1;
    m_next = end + 1;
    return line;
}

std::string FuzzInput::TextLine() {
    return UpToNul(Line());
}

std::string FuzzInput::TextRest() {
    return UpToNul(Rest());
}

std::string FuzzInput::Rest() {
    std::string rest(m_next, m_left);
    m_next += m_left;
    m_left = 0;
    return rest;
}

ExactCopy::ExactCopy(const std::string& bytes)
    : m_data(static_cast<unsigned char*>(std::malloc(bytes.size()))), m_size(bytes.size()) {
    if (m_size > 0) std::memcpy(m_data, bytes.data(), m_size);
}

ExactCopy::~ExactCopy() {
    std::free(m_data);
}

ScratchFile::ScratchFile(const std::string& name) {
    const char* const parent = std::getenv("TMPDIR");
    m_folder = std::string(parent == nullptr ? "/tmp" : parent) + "/krutein-fuzz-XXXXXX";
    Require(mkdtemp(m_folder.data()) != nullptr, "a scratch folder can be made");
    m_path = m_folder + "/" + name;
}

ScratchFile::~ScratchFile() {
    unlink(m_path.c_str());
    rmdir(m_folder.c_str());
}

void ScratchFile::Write(const std::string& content) const {
    const Stream file = Open(m_path, "wb");
    Require(std::fwrite(content.data(), 1, content.size(), file.get()) == content.size(),
            "the scratch file can be written");
}

std::string ScratchFile::Read() const {
    const Stream file = Open(m_path, "rb");
    std::string content;
    char buffer[4096];
    for (std::size_t count = 0; (count = std::fread(buffer, 1, sizeof buffer, file.get())) > 0;)
        content.append(buffer, count);
    return content;
}

std::string AsciiLower(std::string text) {
    for (char& c : text) {
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    }
    return text;
}

bool IsAsciiWithout(const std::string& text, const char* others) {
    return std::all_of(text.begin(), text.end(),
                       [](char c) { return static_cast<unsigned char>(c) < 0x80; }) &&
           text.find_first_of(others) == std::string::npos;
}
