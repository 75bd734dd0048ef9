#include "Host/kruteinctl/Models.h"

#include <algorithm>
#include <iterator>

namespace {

struct Model {
    const char* productType;
    const char* name;
};

constexpr Model kModels[] = {
    {"iPhone3,1", "iPhone 4"},
    {"iPhone3,2", "iPhone 4"},
    {"iPhone3,3", "iPhone 4"},
    {"iPhone4,1", "iPhone 4s"},
    {"iPhone5,1", "iPhone 5"},
    {"iPhone5,2", "iPhone 5"},
    {"iPhone5,3", "iPhone 5c"},
    {"iPhone5,4", "iPhone 5c"},
    {"iPhone6,1", "iPhone 5s"},
    {"iPhone6,2", "iPhone 5s"},
    {"iPhone7,1", "iPhone 6 Plus"},
    {"iPhone7,2", "iPhone 6"},
    {"iPhone8,1", "iPhone 6s"},
    {"iPhone8,2", "iPhone 6s Plus"},
    {"iPhone8,4", "iPhone SE (1st generation)"},
    {"iPhone9,1", "iPhone 7"},
    {"iPhone9,2", "iPhone 7 Plus"},
    {"iPhone9,3", "iPhone 7"},
    {"iPhone9,4", "iPhone 7 Plus"},
    {"iPhone10,1", "iPhone 8"},
    {"iPhone10,2", "iPhone 8 Plus"},
    {"iPhone10,3", "iPhone X"},
    {"iPhone10,4", "iPhone 8"},
    {"iPhone10,5", "iPhone 8 Plus"},
    {"iPhone10,6", "iPhone X"},
    {"iPhone11,2", "iPhone XS"},
    {"iPhone11,4", "iPhone XS Max"},
    {"iPhone11,6", "iPhone XS Max"},
    {"iPhone11,8", "iPhone XR"},
    {"iPhone12,1", "iPhone 11"},
    {"iPhone12,3", "iPhone 11 Pro"},
    {"iPhone12,5", "iPhone 11 Pro Max"},
    {"iPhone12,8", "iPhone SE (2nd generation)"},
    {"iPhone13,1", "iPhone 12 mini"},
    {"iPhone13,2", "iPhone 12"},
    {"iPhone13,3", "iPhone 12 Pro"},
    {"iPhone13,4", "iPhone 12 Pro Max"},
    {"iPhone14,2", "iPhone 13 Pro"},
    {"iPhone14,3", "iPhone 13 Pro Max"},
    {"iPhone14,4", "iPhone 13 mini"},
    {"iPhone14,5", "iPhone 13"},
    {"iPhone14,6", "iPhone SE (3rd generation)"},
    {"iPhone14,7", "iPhone 14"},
    {"iPhone14,8", "iPhone 14 Plus"},
    {"iPhone15,2", "iPhone 14 Pro"},
    {"iPhone15,3", "iPhone 14 Pro Max"},
    {"iPhone15,4", "iPhone 15"},
    {"iPhone15,5", "iPhone 15 Plus"},
    {"iPhone16,1", "iPhone 15 Pro"},
    {"iPhone16,2", "iPhone 15 Pro Max"},
    {"iPhone17,1", "iPhone 16 Pro"},
    {"iPhone17,2", "iPhone 16 Pro Max"},
    {"iPhone17,3", "iPhone 16"},
    {"iPhone17,4", "iPhone 16 Plus"},
    {"iPad4,1", "iPad Air"},
    {"iPad4,2", "iPad Air"},
    {"iPad5,1", "iPad mini 4"},
    {"iPad5,2", "iPad mini 4"},
    {"iPad5,3", "iPad Air 2"},
    {"iPad5,4", "iPad Air 2"},
    {"iPad6,11", "iPad (5th generation)"},
    {"iPad6,12", "iPad (5th generation)"},
    {"iPad7,5", "iPad (6th generation)"},
    {"iPad7,6", "iPad (6th generation)"},
    {"iPad7,11", "iPad (7th generation)"},
    {"iPad7,12", "iPad (7th generation)"},
    {"iPad11,1", "iPad mini (5th generation)"},
    {"iPad11,2", "iPad mini (5th generation)"},
    {"iPad11,3", "iPad Air (3rd generation)"},
    {"iPad11,4", "iPad Air (3rd generation)"},
    {"iPad11,6", "iPad (8th generation)"},
    {"iPad11,7", "iPad (8th generation)"},
    {"iPad12,1", "iPad (9th generation)"},
    {"iPad12,2", "iPad (9th generation)"},
    {"iPad13,1", "iPad Air (4th generation)"},
    {"iPad13,2", "iPad Air (4th generation)"},
    {"iPad13,16", "iPad Air (5th generation)"},
    {"iPad13,17", "iPad Air (5th generation)"},
    {"iPad13,18", "iPad (10th generation)"},
    {"iPad13,19", "iPad (10th generation)"},
    {"iPad14,1", "iPad mini (6th generation)"},
    {"iPad14,2", "iPad mini (6th generation)"},
    {"iPod7,1", "iPod touch (6th generation)"},
    {"iPod9,1", "iPod touch (7th generation)"},
};

}  // namespace

std::string MarketingName(const std::string& productType) {
    const auto* const model = std::find_if(std::begin(kModels), std::end(kModels), [&](const Model& each) {
        return productType == each.productType;
    });
    return model == std::end(kModels) ? "" : model->name;
}

std::string ModelWords(const std::string& productType) {
    const std::string name = MarketingName(productType);
    return name.empty() ? productType : name + " (" + productType + ")";
}
