#pragma once

#include <string>

/// The name under which a model is sold: "iPhone 13" for "iPhone14,5"; "" for one that is not known.
std::string MarketingName(const std::string& productType);

/// Both names of a model: "iPhone 13 (iPhone14,5)"; the product type alone when the other one is not known.
std::string ModelWords(const std::string& productType);
