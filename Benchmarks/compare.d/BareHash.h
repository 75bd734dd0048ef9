#pragma once

#include <openssl/evp.h>

#include <string>

/// SHA-1 as directly as OpenSSL offers it, with one context for all texts: what file IDs are measured by.
class BareHash {
 public:
    BareHash() : m_algorithm(EVP_MD_fetch(nullptr, "SHA1", nullptr)), m_context(EVP_MD_CTX_new()) {}
    ~BareHash() {
        EVP_MD_CTX_free(m_context);
        EVP_MD_free(m_algorithm);
    }
    BareHash(const BareHash&) = delete;
    BareHash& operator=(const BareHash&) = delete;

    /// \return the first byte of the text's digest.
    unsigned char Of(const std::string& text) {
        EVP_DigestInit_ex(m_context, m_algorithm, nullptr);
        EVP_DigestUpdate(m_context, text.data(), text.size());
        EVP_DigestFinal_ex(m_context, m_digest, nullptr);
        return m_digest[0];
    }

 private:
    EVP_MD* m_algorithm;
    EVP_MD_CTX* m_context;
    unsigned char m_digest[EVP_MAX_MD_SIZE] = {};
};
