#include <openssl/evp.h>

#include "Common/std/sha1.h"

namespace krutein {
namespace {

/// A context that is ready for bytes; released by its owner.
EVP_MD_CTX* NewContext() {
    static EVP_MD* const algorithm = EVP_MD_fetch(nullptr, "SHA1", nullptr);  // never released
    EVP_MD_CTX* const context = EVP_MD_CTX_new();
    EVP_DigestInit_ex(context, algorithm == nullptr ? EVP_sha1() : algorithm, nullptr);
    return context;
}

/// A context that is made once for each thread. Looking the algorithm up takes longer than hashing the name
/// of a file.
class Hasher {
 public:
    Hasher() : m_context(NewContext()) {}
    ~Hasher() { EVP_MD_CTX_free(m_context); }
    Hasher(const Hasher&) = delete;
    Hasher& operator=(const Hasher&) = delete;

    /// The context, ready for new bytes.
    EVP_MD_CTX* Begin() const {
        EVP_DigestInit_ex(m_context, nullptr, nullptr);
        return m_context;
    }

 private:
    EVP_MD_CTX* m_context;
};

}  // namespace

void Sha1(std::initializer_list<Sha1Piece> pieces, unsigned char (&digest)[kSha1Bytes]) {
    thread_local const Hasher hasher;
    EVP_MD_CTX* const context = hasher.Begin();
    for (const Sha1Piece& piece : pieces)
        EVP_DigestUpdate(context, piece.data, piece.length);
    EVP_DigestFinal_ex(context, digest, nullptr);
}

Sha1Sum::Sha1Sum() : m_context(NewContext()) {}

Sha1Sum::~Sha1Sum() {
    EVP_MD_CTX_free(static_cast<EVP_MD_CTX*>(m_context));
}

void Sha1Sum::Add(const Sha1Piece& piece) {
    EVP_DigestUpdate(static_cast<EVP_MD_CTX*>(m_context), piece.data, piece.length);
}

void Sha1Sum::Finish(unsigned char (&digest)[kSha1Bytes]) {
    EVP_DigestFinal_ex(static_cast<EVP_MD_CTX*>(m_context), digest, nullptr);
}

}  // namespace krutein
