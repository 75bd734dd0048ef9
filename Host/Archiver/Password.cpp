#include "Host/Archiver/Password.h"

#include <openssl/crypto.h>
#include <openssl/evp.h>
#include <openssl/rand.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <nlohmann/json.hpp>
#include <optional>
#include <system_error>

#include "Host/Archiver/FolderTree.h"
#include "Host/Archiver/ToolError.h"
#include "Host/UniqueFd.h"

namespace krutein {
namespace {

using nlohmann::json;

constexpr std::int64_t kIterations = 100'000;
/// A state file that asks for more is taken for damaged: it would keep us busy for long.
constexpr std::int64_t kMaxIterations = 10'000'000;
constexpr std::size_t kSaltBytes = 16;
constexpr std::size_t kHashBytes = 32;
constexpr std::size_t kMaxStateBytes = 4096;

/// All as in the state file: salt and hash in hex digits.
struct State {
    std::string salt;
    std::int64_t iterations = kIterations;
    std::string hash;
};

std::string Hex(const unsigned char* bytes, std::size_t count) {
    static constexpr char kDigits[] = "0123456789abcdef";
    std::string text;
    for (std::size_t i = 0; i < count; ++i)
        text.append({kDigits[bytes[i] >> 4], kDigits[bytes[i] & 0x0F]});
    return text;
}

std::string NewSalt() {
    unsigned char bytes[kSaltBytes];
    if (RAND_bytes(bytes, sizeof bytes) != 1) throw ToolError(kToolFailed, "no random bytes for a salt");
    return Hex(bytes, sizeof bytes);
}

/// PBKDF2 with HMAC-SHA256.
std::string HashOf(const std::string& password, const std::string& salt, std::int64_t iterations) {
    unsigned char hash[kHashBytes];
    const auto* const saltBytes = reinterpret_cast<const unsigned char*>(salt.data());
    if (PKCS5_PBKDF2_HMAC(password.data(), static_cast<int>(password.size()), saltBytes,
                          static_cast<int>(salt.size()), static_cast<int>(iterations), EVP_sha256(),
                          static_cast<int>(sizeof hash), hash) != 1) {
        throw ToolError(kToolFailed, "the password cannot be hashed");
    }
    return Hex(hash, sizeof hash);
}

std::string HomeFolder() {
    const char* const home = std::getenv("HOME");
    if (home != nullptr && *home == '/') return home;
    const passwd* const user = getpwuid(getuid());
    if (user == nullptr) throw ToolError(kToolFailed, "this user has no home folder to keep passwords in");
    return user->pw_dir;
}

std::string StateFolder() {
    const char* const chosen = std::getenv("KRUTEIN_SAMPLE_STATE");
    if (chosen != nullptr && *chosen != '\0') return chosen;
    const char* const stateHome = std::getenv("XDG_STATE_HOME");
    const bool usable = stateHome != nullptr && *stateHome == '/';  // relative paths are to be ignored
    return (usable ? stateHome : HomeFolder() + "/.local/state") + "/krutein/sample-devices";
}

/// \return nothing when the device has no state.
std::optional<State> Read(const std::string& path) {
    struct stat info {};
    if (lstat(path.c_str(), &info) != 0 && (errno == ENOENT || errno == ENOTDIR)) return std::nullopt;
    std::string text(kMaxStateBytes, '\0');
    std::ifstream file(path, std::ios::binary);
    file.read(text.data(), static_cast<std::streamsize>(text.size()));
    text.resize(static_cast<std::size_t>(file.gcount()));
    try {
        const json state = json::parse(text);
        State result{state.at("salt"), state.at("iterations"), state.at("hash")};
        if (result.iterations >= 1 && result.iterations <= kMaxIterations) return result;
    } catch (const json::exception&) {
        // Reported below, whatever is wrong with it.
    }
    throw ToolError(kToolFailed, "the password file " + path + " is damaged");
}

/// A file next to the one that it is going to replace; it is removed again unless it does.
class Replacement {
 public:
    explicit Replacement(const std::string& target) : m_target(target), m_path(target + ".XXXXXX") {
        m_file = UniqueFd(mkstemp(m_path.data()));  // for the owner only
        if (!m_file.IsOpen()) ThrowErrno("cannot create " + m_path, errno);
    }
    ~Replacement() {
        if (!m_done) unlink(m_path.c_str());
    }
    Replacement(const Replacement&) = delete;
    Replacement& operator=(const Replacement&) = delete;

    void Write(const std::string& text) {
        std::size_t done = 0;
        while (done < text.size()) {
            const ssize_t count = write(m_file.Get(), text.data() + done, text.size() - done);
            if (count < 0 && errno != EINTR) ThrowErrno("cannot write " + m_path, errno);
            if (count > 0) done += static_cast<std::size_t>(count);
        }
        if (fsync(m_file.Get()) != 0) ThrowErrno("cannot write " + m_path, errno);
        if (const int error = m_file.Close()) ThrowErrno("cannot write " + m_path, error);
    }

    void TakePlace() {
        if (rename(m_path.c_str(), m_target.c_str()) != 0) ThrowErrno("cannot replace " + m_target, errno);
        m_done = true;
    }

 private:
    std::string m_target;
    std::string m_path;
    UniqueFd m_file;
    bool m_done = false;
};

}  // namespace

StoredPassword::StoredPassword(const std::string& udid)
    : m_folder(StateFolder()), m_path(m_folder + "/" + udid + ".json") {}

bool StoredPassword::Is(const std::string& password) const {
    const std::optional<State> state = Read(m_path);
    if (!state) return password.empty();
    const std::string hash = HashOf(password, state->salt, state->iterations);
    return hash.size() == state->hash.size() &&
           CRYPTO_memcmp(hash.data(), state->hash.data(), hash.size()) == 0;
}

void StoredPassword::Set(const std::string& password) const {
    const std::string salt = NewSalt();
    const json state = {
        {"salt", salt}, {"iterations", kIterations}, {"hash", HashOf(password, salt, kIterations)}};
    MakeFolders(m_folder);
    Replacement file(m_path);
    file.Write(state.dump(2) + "\n");
    file.TakePlace();
}

}  // namespace krutein
