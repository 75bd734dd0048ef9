#include "Tests/Host/kruteinctl/Output.h"

#include <gtest/gtest.h>

#include <sstream>

std::vector<std::string> Lines(const std::string& text) {
    std::istringstream in(text);
    std::vector<std::string> lines;
    for (std::string line; std::getline(in, line);)
        lines.push_back(line);
    return lines;
}

std::vector<nlohmann::json> Objects(const std::string& text) {
    std::vector<nlohmann::json> objects;
    for (const std::string& line : Lines(text)) {
        objects.push_back(nlohmann::json::parse(line, nullptr, false));
        EXPECT_TRUE(objects.back().is_object()) << line;
    }
    return objects;
}
