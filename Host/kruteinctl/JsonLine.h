#pragma once

#include <nlohmann/json.hpp>
#include <string>

/// An object as a line for programs. Bytes that are no UTF-8 are replaced, as JSON knows none.
inline std::string JsonLine(const nlohmann::ordered_json& object) {
    return object.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace) + "\n";
}
