#pragma once

#include <plist/plist.h>

#include <ctime>
#include <memory>
#include <string>
#include <vector>

namespace krutein {

/// 2001-01-01, from where property lists count their dates, in seconds since 1970.
constexpr std::time_t kPlistEpoch = 978'307'200;

/// A property list that is built and written. For reading what may be hostile there is
/// Host/BackupFormat/BinaryPlistReader.h.
class Plist {
 public:
    /// An empty dictionary.
    Plist();

    void Set(const std::string& key, const std::string& text);
    void Set(const std::string& key, const char* text) { Set(key, std::string(text)); }
    void Set(const std::string& key, bool value);
    void Set(const std::string& key, const std::vector<std::string>& texts);
    void Set(const std::string& key, Plist dictionary);
    /// \param node  of any type; the list's from then on.
    void Set(const std::string& key, plist_t node);
    /// \param time  in seconds since 1970.
    void SetDate(const std::string& key, std::time_t time);

    std::string ToBinary() const;
    std::string ToXml() const;

 private:
    struct FreePlist {
        void operator()(void* node) const { plist_free(node); }
    };
    std::unique_ptr<void, FreePlist> m_node;
};

}  // namespace krutein
