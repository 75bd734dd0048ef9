#pragma once

#include <plist/plist.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace devicesim {

/// A property list: read from a client, or put together for it. Owns its node.
class Plist {
 public:
    /// An empty dictionary.
    Plist();
    static Plist OfText(const std::string& text);
    static Plist OfNumber(std::uint64_t number);

    /// \return nothing when the bytes are no property list.
    static std::optional<Plist> Parse(const std::string& bytes);

    // The members of a dictionary. A list that is none has no members, and takes none.
    Plist& Set(const std::string& key, const std::string& text);
    Plist& Set(const std::string& key, const char* text) { return Set(key, std::string(text)); }
    Plist& Set(const std::string& key, bool value);
    Plist& Set(const std::string& key, std::uint64_t number);
    Plist& Set(const std::string& key, Plist value);
    Plist& SetData(const std::string& key, const std::string& bytes);
    /// An array of one kind of lists.
    Plist& SetList(const std::string& key, std::vector<Plist> values);

    bool Has(const std::string& key) const;
    /// "" when there is no such member, or when it is no text. Data likewise.
    std::string Text(const std::string& key) const;
    std::string Data(const std::string& key) const;
    std::optional<std::uint64_t> Number(const std::string& key) const;
    /// A copy; nothing when there is no such member.
    std::optional<Plist> Member(const std::string& key) const;

    bool IsText() const;
    std::string ToXml() const;

 private:
    struct FreeNode {
        void operator()(void* node) const { plist_free(node); }
    };

    explicit Plist(plist_t node) : m_node(node) {}
    Plist& SetNode(const std::string& key, plist_t value);
    plist_t Find(const std::string& key) const;

    std::unique_ptr<void, FreeNode> m_node;
};

}  // namespace devicesim
