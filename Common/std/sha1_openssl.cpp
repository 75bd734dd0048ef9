#include <openssl/evp.h>

#include "Common/std/sha1.h"

namespace krutein {
namespace {

/// A context that is made once for each thread. Looking the algorithm up takes longer than hashing the name
/// of a file.
class Hasher {
 public:
    Hasher() : m_context(EVP_MD_CTX_new()) {
        static EVP_MD* const algorithm = EVP_MD_fetch(nullptr, "SHA1", nullptr);  // never released
        EVP_DigestInit_ex(m_context, algorithm == nullptr ? EVP_sha1() : algorithm, nullptr);
    }
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

}  // namespace krutein
