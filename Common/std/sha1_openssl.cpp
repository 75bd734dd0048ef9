#include <openssl/evp.h>

#include "Common/std/sha1.h"

namespace krutein {

void Sha1(const void* data, std::size_t length, unsigned char (&digest)[kSha1Bytes]) {
    unsigned int written = kSha1Bytes;
    EVP_Digest(data, length, digest, &written, EVP_sha1(), nullptr);
}

}  // namespace krutein
