#include <CommonCrypto/CommonDigest.h>

#include "Common/std/sha1.h"

namespace krutein {

void Sha1(const void* data, std::size_t length, unsigned char (&digest)[kSha1Bytes]) {
    // The one-shot call takes a 32-bit length; lengths here are never above INT_MAX.
    CC_SHA1(data, static_cast<CC_LONG>(length), digest);
}

}  // namespace krutein
