#pragma once

#include <cstddef>
#include <vector>

#include "Common/ini/dictionary.h"

namespace krutein::ini {

/// Fills a dictionary that nobody else changes meanwhile. It remembers which key has which slot, so that the
/// time for a long file does not grow with the square of its keys. Internal.
class DictionaryBuilder {
 public:
    explicit DictionaryBuilder(dictionary& d) : m_dictionary(d) {}

    /// As dictionary_set. Neither is null but the value.
    int Set(const char* key, const char* val);

 private:
    static constexpr std::size_t kLeastPlaces = 256;

    int Find(const char* key, unsigned hash) const;
    bool MakeRoom();
    void Note(int slot);

    std::size_t PlaceOf(unsigned hash) const { return hash & (m_places.size() - 1); }
    std::size_t Next(std::size_t place) const { return (place + 1) & (m_places.size() - 1); }

    dictionary& m_dictionary;
    std::vector<int> m_places;  ///< slots by hash, the next place when one is taken; a power of two of them
};

}  // namespace krutein::ini
