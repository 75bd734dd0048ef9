#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace krutein {

/// What a file holds, from its first byte to its last: a given text, or bytes that are made up while they are
/// read, so that no file takes memory.
class FileBytes {
 public:
    enum class Kind {
        kData,     ///< looks random, does not compress
        kText,     ///< printable ASCII in lines
        kPicture,  ///< kData between the first and the last bytes of a JPEG file
    };

    explicit FileBytes(std::string given);
    FileBytes(Kind kind, std::int64_t size, std::uint64_t seed);

    std::int64_t Size() const { return m_size; }

    /// The next bytes, whatever the pieces are that they are read in.
    /// \return how many; 0 at the end.
    std::size_t Read(char* to, std::size_t room);

    /// All of them, for small ones.
    std::string All() &&;

 private:
    void MakeUp(char* to, std::size_t count) const;
    void Decorate(char* to, std::size_t count) const;

    bool m_isGiven;
    std::string m_given;
    Kind m_kind = Kind::kData;
    std::int64_t m_size;
    std::uint64_t m_seed = 0;
    std::int64_t m_done = 0;
};

}  // namespace krutein
