#pragma once

#include <string>
#include <vector>

/// An app whose data a typed backup can keep.
struct App {
    int bit;              ///< of the backup type
    const char* word;     ///< what users call it
    const char* section;  ///< of vm_config.ini
};

/// All of them, in the order in which they are shown.
const std::vector<App>& Apps();

/// The sections of vm_config.ini for a type's apps.
std::vector<std::string> SectionsOf(int type);
