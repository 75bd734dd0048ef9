#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace krutein {

/// Builds a small binary property list straight into its bytes. A catalogue has one for every file: with a
/// tree of nodes for each they would take more time than the files themselves.
class BinaryPlistWriter {
 public:
    /// What was added, to be put into collections. There is room for 256.
    using Object = std::uint8_t;

    BinaryPlistWriter();

    Object Number(std::uint64_t value);
    Object Uid(std::uint8_t value);
    Object Text(const std::string& utf8);
    Object Array(const std::vector<Object>& elements);
    Object Dictionary(const std::vector<std::pair<const char*, Object>>& members);

    /// \return the property list, whose root is this object. The writer is used up.
    std::string Finish(Object top);

 private:
    Object Begin(unsigned type, std::uint64_t count);
    void Append(std::uint64_t value, unsigned width);

    std::string m_bytes;
    std::vector<std::uint32_t> m_offsets;  ///< of the objects so far
};

}  // namespace krutein
