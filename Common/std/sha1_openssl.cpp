#include <openssl/evp.h>

#include <memory>

#include "Common/std/sha1.h"

namespace krutein {
namespace {

struct FreeContext {
    void operator()(EVP_MD_CTX* context) const { EVP_MD_CTX_free(context); }
};
using Context = std::unique_ptr<EVP_MD_CTX, FreeContext>;

/// Looking the algorithm up takes longer than hashing the name of a file: it is done once. Never released.
const EVP_MD* Algorithm() {
    static const EVP_MD* const fetched = EVP_MD_fetch(nullptr, "SHA1", nullptr);
    return fetched == nullptr ? EVP_sha1() : fetched;
}

}  // namespace

void Sha1(std::initializer_list<Sha1Piece> pieces, unsigned char (&digest)[kSha1Bytes]) {
    thread_local const Context context(EVP_MD_CTX_new());
    EVP_DigestInit_ex(context.get(), Algorithm(), nullptr);
    for (const Sha1Piece& piece : pieces)
        EVP_DigestUpdate(context.get(), piece.data, piece.length);
    EVP_DigestFinal_ex(context.get(), digest, nullptr);
}

}  // namespace krutein
