#include "Tools/devicesim/Plist.h"

#include <cstdlib>
#include <new>
#include <utility>

namespace devicesim {
namespace {

struct FreeMemory {
    void operator()(void* memory) const { std::free(memory); }
};
using Text = std::unique_ptr<char, FreeMemory>;

}  // namespace

Plist::Plist() : m_node(plist_new_dict()) {}

Plist Plist::OfText(const std::string& text) {
    return Plist(plist_new_string(text.c_str()));
}

Plist Plist::OfNumber(std::uint64_t number) {
    return Plist(plist_new_uint(number));
}

std::optional<Plist> Plist::Parse(const std::string& bytes) {
    plist_t node = nullptr;
    plist_from_memory(bytes.data(), static_cast<std::uint32_t>(bytes.size()), &node);
    if (node == nullptr) return std::nullopt;
    return Plist(node);
}

Plist& Plist::Set(const std::string& key, const std::string& text) {
    return SetNode(key, plist_new_string(text.c_str()));
}

Plist& Plist::Set(const std::string& key, bool value) {
    return SetNode(key, plist_new_bool(value ? 1 : 0));
}

Plist& Plist::Set(const std::string& key, std::uint64_t number) {
    return SetNode(key, plist_new_uint(number));
}

Plist& Plist::Set(const std::string& key, Plist value) {
    return SetNode(key, value.m_node.release());
}

Plist& Plist::SetData(const std::string& key, const std::string& bytes) {
    return SetNode(key, plist_new_data(bytes.data(), bytes.size()));
}

Plist& Plist::SetList(const std::string& key, std::vector<Plist> values) {
    const plist_t list = plist_new_array();
    for (Plist& value : values)
        plist_array_append_item(list, value.m_node.release());
    return SetNode(key, list);
}

bool Plist::Has(const std::string& key) const {
    return Find(key) != nullptr;
}

std::string Plist::Text(const std::string& key) const {
    const plist_t node = Find(key);
    if (node == nullptr || plist_get_node_type(node) != PLIST_STRING) return {};
    char* text = nullptr;
    plist_get_string_val(node, &text);
    const devicesim::Text owned(text);
    return text == nullptr ? std::string() : std::string(text);
}

std::string Plist::Data(const std::string& key) const {
    const plist_t node = Find(key);
    if (node == nullptr || plist_get_node_type(node) != PLIST_DATA) return {};
    char* bytes = nullptr;
    std::uint64_t count = 0;
    plist_get_data_val(node, &bytes, &count);
    const devicesim::Text owned(bytes);
    return bytes == nullptr ? std::string() : std::string(bytes, count);
}

std::optional<std::uint64_t> Plist::Number(const std::string& key) const {
    const plist_t node = Find(key);
    if (node == nullptr || plist_get_node_type(node) != PLIST_UINT) return std::nullopt;
    std::uint64_t number = 0;
    plist_get_uint_val(node, &number);
    return number;
}

std::optional<Plist> Plist::Member(const std::string& key) const {
    const plist_t node = Find(key);
    if (node == nullptr) return std::nullopt;
    return Plist(plist_copy(node));
}

bool Plist::IsText() const {
    return plist_get_node_type(m_node.get()) == PLIST_STRING;
}

std::string Plist::ToXml() const {
    char* bytes = nullptr;
    std::uint32_t count = 0;
    plist_to_xml(m_node.get(), &bytes, &count);
    if (bytes == nullptr) throw std::bad_alloc();
    const std::unique_ptr<char, void (*)(char*)> owned(bytes, &plist_to_xml_free);
    return {bytes, count};
}

Plist& Plist::SetNode(const std::string& key, plist_t value) {
    if (plist_get_node_type(m_node.get()) == PLIST_DICT) {
        plist_dict_set_item(m_node.get(), key.c_str(), value);
    } else {
        plist_free(value);
    }
    return *this;
}

plist_t Plist::Find(const std::string& key) const {
    if (plist_get_node_type(m_node.get()) != PLIST_DICT) return nullptr;
    return plist_dict_get_item(m_node.get(), key.c_str());
}

}  // namespace devicesim
