#include "Host/Archiver/Plist.h"

#include <cstdint>
#include <new>

namespace krutein {
namespace {

/// Takes over what libplist wrote.
std::string TakeOver(char* bytes, std::uint32_t count, void (*release)(char*)) {
    if (bytes == nullptr) throw std::bad_alloc();
    const std::unique_ptr<char, void (*)(char*)> owned(bytes, release);
    return {bytes, count};
}

}  // namespace

Plist::Plist() : m_node(plist_new_dict()) {}

void Plist::Set(const std::string& key, const std::string& text) {
    plist_dict_set_item(m_node.get(), key.c_str(), plist_new_string(text.c_str()));
}

void Plist::Set(const std::string& key, bool value) {
    plist_dict_set_item(m_node.get(), key.c_str(), plist_new_bool(value ? 1 : 0));
}

void Plist::Set(const std::string& key, const std::vector<std::string>& texts) {
    const plist_t array = plist_new_array();
    for (const std::string& text : texts)
        plist_array_append_item(array, plist_new_string(text.c_str()));
    plist_dict_set_item(m_node.get(), key.c_str(), array);
}

void Plist::Set(const std::string& key, Plist dictionary) {
    plist_dict_set_item(m_node.get(), key.c_str(), dictionary.m_node.release());
}

void Plist::Set(const std::string& key, plist_t node) {
    plist_dict_set_item(m_node.get(), key.c_str(), node);
}

void Plist::SetDate(const std::string& key, std::time_t time) {
    const auto seconds = static_cast<std::int32_t>(time - kPlistEpoch);
    plist_dict_set_item(m_node.get(), key.c_str(), plist_new_date(seconds, 0));
}

std::string Plist::ToBinary() const {
    char* bytes = nullptr;
    std::uint32_t count = 0;
    plist_to_bin(m_node.get(), &bytes, &count);
    return TakeOver(bytes, count, &plist_to_bin_free);
}

std::string Plist::ToXml() const {
    char* bytes = nullptr;
    std::uint32_t count = 0;
    plist_to_xml(m_node.get(), &bytes, &count);
    return TakeOver(bytes, count, &plist_to_xml_free);
}

}  // namespace krutein
