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

Sha1Sum::Sha1Sum() : m_context(new CC_SHA1_CTX) {
    CC_SHA1_Init(static_cast<CC_SHA1_CTX*>(m_context));
}

Sha1Sum::~Sha1Sum() {
    delete static_cast<CC_SHA1_CTX*>(m_context);
}

void Sha1Sum::Add(const Sha1Piece& piece) {
    CC_SHA1_Update(static_cast<CC_SHA1_CTX*>(m_context), piece.data, static_cast<CC_LONG>(piece.length));
}

void Sha1Sum::Finish(unsigned char (&digest)[kSha1Bytes]) {
    CC_SHA1_Final(digest, static_cast<CC_SHA1_CTX*>(m_context));
}

}  // namespace krutein
