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

/// The digest of the pieces, one behind the other. The one seam to the platform's SHA-1: sha1_openssl.cpp or
/// sha1_mac.cpp, as the build chooses.
void Sha1(std::initializer_list<Sha1Piece> pieces, unsigned char (&digest)[kSha1Bytes]);

}  // namespace krutein
