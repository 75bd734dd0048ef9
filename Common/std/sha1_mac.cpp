#include <CommonCrypto/CommonDigest.h>

#include "Common/std/sha1.h"

namespace krutein {

void Sha1(std::initializer_list<Sha1Piece> pieces, unsigned char (&digest)[kSha1Bytes]) {
    CC_SHA1_CTX context;
    CC_SHA1_Init(&context);
    for (const Sha1Piece& piece : pieces)
        CC_SHA1_Update(&context, piece.data, static_cast<CC_LONG>(piece.length));
    CC_SHA1_Final(digest, &context);
}

}  // namespace krutein
