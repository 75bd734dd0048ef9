#pragma once

#include <openssl/sha.h>

/// CommonCrypto's SHA-1 by OpenSSL, whose older functions have the same shape.

using CC_LONG = unsigned int;
using CC_SHA1_CTX = SHA_CTX;

inline int CC_SHA1_Init(CC_SHA1_CTX* context) {
    return SHA1_Init(context);
}
inline int CC_SHA1_Update(CC_SHA1_CTX* context, const void* data, CC_LONG length) {
    return SHA1_Update(context, data, length);
}
inline int CC_SHA1_Final(unsigned char* digest, CC_SHA1_CTX* context) {
    return SHA1_Final(digest, context);
}
