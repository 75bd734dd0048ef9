#pragma once

#include <cstddef>
#include <initializer_list>

namespace krutein {

constexpr std::size_t kSha1Bytes = 20;

/// Bytes to be hashed; below 4 GiB.
struct Sha1Piece {
    const void* data;
    std::size_t length;
};

// The one seam to the platform's SHA-1: sha1_openssl.cpp or sha1_mac.cpp, as the build chooses.

/// The digest of the pieces, one behind the other.
void Sha1(std::initializer_list<Sha1Piece> pieces, unsigned char (&digest)[kSha1Bytes]);

/// The digest of bytes that come piece by piece. Used by one thread at a time.
class Sha1Sum {
 public:
    Sha1Sum();
    ~Sha1Sum();
    Sha1Sum(const Sha1Sum&) = delete;
    Sha1Sum& operator=(const Sha1Sum&) = delete;

    void Add(const Sha1Piece& piece);
    /// The last call.
    void Finish(unsigned char (&digest)[kSha1Bytes]);

 private:
    void* m_context;  ///< the platform's
};

}  // namespace krutein
