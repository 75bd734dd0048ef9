#include "Host/kruteinctl/HelpFormatter.h"

#include <sstream>

namespace {

constexpr std::size_t kColumns = 80;
constexpr std::size_t kNameColumns = 24;

/// ASCII text with line ends where a word would not fit any more.
std::string Wrapped(const std::string& text, std::size_t columns) {
    std::istringstream words(text);
    std::string result;
    std::size_t taken = 0;
    for (std::string word; words >> word;) {
        if (taken != 0 && taken + 1 + word.size() > columns) {
            result += '\n';
            taken = 0;
        } else if (taken != 0) {
            result += ' ';
            ++taken;
        }
        result += word;
        taken += word.size();
    }
    return result;
}

}  // namespace

HelpFormatter::HelpFormatter() {
    column_width(kNameColumns);
    label("SUBCOMMAND", "COMMAND");
}

/// The name of the value alone: what needs what is told by the description.
std::string HelpFormatter::make_option_opts(const CLI::Option* option) const {
    const bool takesValue = option->get_items_expected_max() > 0 && !option->get_positional();
    return takesValue ? " " + option->get_type_name() : "";
}

std::string HelpFormatter::make_option_desc(const CLI::Option* option) const {
    return Wrapped(option->get_description(), kColumns - kNameColumns);
}
