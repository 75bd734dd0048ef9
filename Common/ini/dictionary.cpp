#include "Common/ini/dictionary.h"

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <new>

#include "Common/ini/dictionary_builder.h"

namespace {

constexpr std::size_t kLeastSlots = 128;

char* Duplicate(const char* text) {
    const std::size_t bytes = std::strlen(text) + 1;
    auto* const copy = static_cast<char*>(std::malloc(bytes));
    if (copy != nullptr) std::memcpy(copy, text, bytes);
    return copy;
}

struct Slots {
    char** val = nullptr;
    char** key = nullptr;
    unsigned* hash = nullptr;

    bool Allocate(int size) {
        if (size < 0) return false;  // doubled beyond what an int holds
        const auto count = static_cast<std::size_t>(size);
        val = static_cast<char**>(std::calloc(count, sizeof *val));
        key = static_cast<char**>(std::calloc(count, sizeof *key));
        hash = static_cast<unsigned*>(std::calloc(count, sizeof *hash));
        if (val != nullptr && key != nullptr && hash != nullptr) return true;
        Free();
        return false;
    }

    void Free() const {
        std::free(val);
        std::free(key);
        std::free(hash);
    }

    void GiveTo(dictionary& d, int size) const {
        d.val = val;
        d.key = key;
        d.hash = hash;
        d.size = size;
    }
};

constexpr int kNoSlot = -1;

int SlotOf(const dictionary& d, const char* key, unsigned hash) {
    for (int i = 0; i < d.size; ++i) {
        if (d.hash[i] == hash && d.key[i] != nullptr && std::strcmp(d.key[i], key) == 0) return i;
    }
    return kNoSlot;
}

bool Grow(dictionary& d) {
    if (d.size > INT_MAX / 2) return false;
    Slots larger;
    if (!larger.Allocate(d.size * 2)) return false;
    const auto count = static_cast<std::size_t>(d.size);
    std::copy_n(d.val, count, larger.val);
    std::copy_n(d.key, count, larger.key);
    std::copy_n(d.hash, count, larger.hash);
    Slots{d.val, d.key, d.hash}.Free();
    larger.GiveTo(d, d.size * 2);
    return true;
}

int FreeSlot(const dictionary& d) {
    int slot = d.n;
    while (d.key[slot] != nullptr)
        slot = slot + 1 == d.size ? 0 : slot + 1;
    return slot;
}

/// \return the new entry's slot, or kNoSlot without memory.
int Insert(dictionary& d, const char* key, unsigned hash, char* value) {
    if (d.n == d.size && !Grow(d)) return kNoSlot;
    char* const copy = Duplicate(key);
    if (copy == nullptr) return kNoSlot;
    const int slot = FreeSlot(d);
    d.key[slot] = copy;
    d.val[slot] = value;
    d.hash[slot] = hash;
    ++d.n;
    return slot;
}

/// Gives the key the value: in the slot that it has, or as a new entry.
/// \return the key's slot, or kNoSlot without memory.
int Store(dictionary& d, int slot, const char* key, unsigned hash, const char* val) {
    // Copied first: the value may be the one that it replaces.
    char* const value = val == nullptr ? nullptr : Duplicate(val);
    if (val != nullptr && value == nullptr) return kNoSlot;
    if (slot != kNoSlot) {
        std::free(d.val[slot]);
        d.val[slot] = value;
        return slot;
    }
    const int inserted = Insert(d, key, hash, value);
    if (inserted == kNoSlot) std::free(value);
    return inserted;
}

}  // namespace

namespace krutein::ini {

int DictionaryBuilder::Set(const char* key, const char* val) {
    const unsigned hash = dictionary_hash(key);
    const int known = Find(key, hash);
    if (known == kNoSlot && !MakeRoom()) return -1;
    const int slot = Store(m_dictionary, known, key, hash, val);
    if (slot == kNoSlot) return -1;
    if (known == kNoSlot) Note(slot);
    return 0;
}

int DictionaryBuilder::Find(const char* key, unsigned hash) const {
    if (m_places.empty()) return kNoSlot;
    for (std::size_t place = PlaceOf(hash);; place = Next(place)) {
        const int slot = m_places[place];
        if (slot == kNoSlot) return kNoSlot;
        if (m_dictionary.hash[slot] == hash && std::strcmp(m_dictionary.key[slot], key) == 0) return slot;
    }
}

/// Keeps at least half of the places free.
bool DictionaryBuilder::MakeRoom() {
    const auto entries = static_cast<std::size_t>(m_dictionary.n);
    if (2 * (entries + 1) <= m_places.size()) return true;
    try {
        m_places.assign(std::max(kLeastPlaces, 2 * m_places.size()), kNoSlot);
    } catch (const std::bad_alloc&) {
        return false;
    }
    for (int slot = 0; slot < m_dictionary.size; ++slot) {
        if (m_dictionary.key[slot] != nullptr) Note(slot);
    }
    return true;
}

void DictionaryBuilder::Note(int slot) {
    std::size_t place = PlaceOf(m_dictionary.hash[slot]);
    while (m_places[place] != kNoSlot)
        place = Next(place);
    m_places[place] = slot;
}

}  // namespace krutein::ini

unsigned dictionary_hash(const char* key) {
    if (key == nullptr) return 0;
    unsigned hash = 0;
    for (; *key != '\0'; ++key) {
        hash += static_cast<unsigned>(static_cast<signed char>(*key));
        hash += hash << 10U;
        hash ^= hash >> 6U;
    }
    hash += hash << 3U;
    hash ^= hash >> 11U;
    hash += hash << 15U;
    return hash;
}

dictionary* dictionary_new(std::size_t size) {
    if (size > INT_MAX) return nullptr;
    const int slots = static_cast<int>(std::max(size, kLeastSlots));
    auto* const d = static_cast<dictionary*>(std::calloc(1, sizeof(dictionary)));
    if (d == nullptr) return nullptr;
    Slots fresh;
    if (!fresh.Allocate(slots)) {
        std::free(d);
        return nullptr;
    }
    fresh.GiveTo(*d, slots);
    return d;
}

void dictionary_del(dictionary* d) {
    if (d == nullptr) return;
    for (int i = 0; i < d->size; ++i) {
        std::free(d->key[i]);
        std::free(d->val[i]);
    }
    Slots{d->val, d->key, d->hash}.Free();
    std::free(d);
}

const char* dictionary_get(const dictionary* d, const char* key, const char* def) {
    if (d == nullptr || key == nullptr) return def;
    const int slot = SlotOf(*d, key, dictionary_hash(key));
    return slot == kNoSlot ? def : d->val[slot];
}

int dictionary_set(dictionary* d, const char* key, const char* val) {
    if (d == nullptr || key == nullptr) return -1;
    const unsigned hash = dictionary_hash(key);
    return Store(*d, SlotOf(*d, key, hash), key, hash, val) == kNoSlot ? -1 : 0;
}

void dictionary_unset(dictionary* d, const char* key) {
    if (d == nullptr || key == nullptr) return;
    const int slot = SlotOf(*d, key, dictionary_hash(key));
    if (slot == kNoSlot) return;
    std::free(d->key[slot]);
    std::free(d->val[slot]);
    d->key[slot] = nullptr;
    d->val[slot] = nullptr;
    d->hash[slot] = 0;
    --d->n;
}

void dictionary_dump(const dictionary* d, FILE* out) {
    if (d == nullptr || out == nullptr) return;
    if (d->n < 1) {
        std::fputs("empty dictionary\n", out);
        return;
    }
    for (int i = 0; i < d->size; ++i) {
        if (d->key[i] == nullptr) continue;
        std::fprintf(out, "%20s\t[%s]\n", d->key[i], d->val[i] == nullptr ? "UNDEF" : d->val[i]);
    }
}
