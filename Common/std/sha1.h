#pragma once

#include <cstddef>

namespace krutein {

constexpr std::size_t kSha1Bytes = 20;

/// The digest of `length` bytes. The one seam to the platform's SHA-1: sha1_openssl.cpp or sha1_mac.cpp, as
/// the build chooses.
void Sha1(const void* data, std::size_t length, unsigned char (&digest)[kSha1Bytes]);

}  // namespace krutein
