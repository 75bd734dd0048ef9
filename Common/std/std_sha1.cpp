#include "Common/std/std_sha1.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <future>
#include <iterator>
#include <memory>
#include <system_error>
#include <utility>

#include "Common/std/read_file.h"
#include "Common/std/sha1.h"
#include "Common/std/std_string.h"

namespace {

constexpr std::size_t kShortTextBytes = 512;

using Digest = unsigned char[krutein::kSha1Bytes];

/// All bytes in hexadecimal.
struct HexTable {
    char digits[256][2];
};

constexpr HexTable MakeHexTable() {
    constexpr char kDigits[] = "0123456789abcdef";
    HexTable table{};
    for (int byte = 0; byte < 256; ++byte) {
        table.digits[byte][0] = kDigits[byte >> 4];
        table.digits[byte][1] = kDigits[byte & 0x0F];
    }
    return table;
}

std::string HexOf(const Digest& digest) {
    static constexpr HexTable kHex = MakeHexTable();
    char hex[2 * krutein::kSha1Bytes];
    char* to = hex;
    for (const unsigned char byte : digest) {
        std::memcpy(to, kHex.digits[byte], 2);
        to += 2;
    }
    return {hex, sizeof hex};
}

/// Hashes each piece of a file while the next one is read.
class FileSum {
 public:
    void Add(const krutein::Sha1Piece& piece) {
        AwaitPiece();
        if (piece.length < krutein::kReadPieceBytes) {
            m_sum.Add(piece);  // the last: nothing is read meanwhile
            return;
        }
        try {
            m_adding = std::async(std::launch::async, [this, piece] { m_sum.Add(piece); });
        } catch (const std::system_error&) {
            m_sum.Add(piece);  // no thread to be had
        }
    }

    void Finish(Digest& digest) {
        AwaitPiece();
        m_sum.Finish(digest);
    }

 private:
    void AwaitPiece() {
        if (m_adding.valid()) m_adding.get();
    }

    krutein::Sha1Sum m_sum;
    std::future<void> m_adding;
};

void HandOut(const Digest& digest, void** out, int* length) {
    if (out == nullptr) return;
    auto* const copy = new unsigned char[krutein::kSha1Bytes];
    std::copy(std::begin(digest), std::end(digest), copy);
    *out = copy;
    if (length != nullptr) *length = static_cast<int>(krutein::kSha1Bytes);
}

}  // namespace

std::string STD_FILE_CalcSha1A(const void* data, int length, void** digest, int* digestLength) {
    Digest bytes;
    const bool empty = data == nullptr || length < 1;
    krutein::Sha1({{empty ? "" : data, empty ? 0 : static_cast<std::size_t>(length)}}, bytes);
    HandOut(bytes, digest, digestLength);
    return HexOf(bytes);
}

std::wstring STD_FILE_CalcSha1W(const void* data, int length, void** digest, int* digestLength) {
    return STD_CA2W(STD_FILE_CalcSha1A(data, length, digest, digestLength));
}

std::string STD_FILE_CalcStringSha1A(const std::string& text) {
    Digest bytes;
    krutein::Sha1({{text.data(), text.size()}}, bytes);
    return HexOf(bytes);
}

std::string STD_FILE_CalcDomainPathSha1A(std::string domain, const std::string& relativePath) {
    Digest bytes;
    const std::size_t length = domain.size() + 1 + relativePath.size();
    if (length <= kShortTextBytes) {
        // One piece takes less time than three, and most names are short.
        char text[kShortTextBytes];
        char* to = std::copy(domain.begin(), domain.end(), text);
        *to++ = '-';
        std::copy(relativePath.begin(), relativePath.end(), to);
        krutein::Sha1({{text, length}}, bytes);
    } else {
        krutein::Sha1({{domain.data(), domain.size()}, {"-", 1}, {relativePath.data(), relativePath.size()}},
                      bytes);
    }
    return HexOf(bytes);
}

bool STD_FILE_CalcFileSha1A(std::string path, void*& digest, int& digestLength) {
    krutein::FileContent content;
    FileSum sum;  // behind the content, which it may still be reading when a failure ends this
    const auto add = [&sum](const char* piece, std::size_t bytes) { sum.Add({piece, bytes}); };
    if (!krutein::ReadFile(std::move(path), content, add)) return false;
    Digest bytes;
    sum.Finish(bytes);
    HandOut(bytes, &digest, &digestLength);
    return true;
}

bool STD_FILE_CalcFileSha1W(std::wstring /*path*/, void*& /*digest*/, int& /*digestLength*/) {
    return false;
}
