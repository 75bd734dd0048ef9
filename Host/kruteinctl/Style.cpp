#include "Host/kruteinctl/Style.h"

#include <cstdlib>

namespace {

std::string Variable(const char* name) {
    const char* const value = std::getenv(name);
    return value == nullptr ? "" : value;
}

}  // namespace

std::string Painted(const std::string& text, Colour colour, const Style& style) {
    if (!style.colours || colour == Colour::kNone || text.empty()) return text;
    return (colour == Colour::kGood ? "\x1b[32m" : "\x1b[1;31m") + text + "\x1b[0m";
}

bool TerminalHasControls() {
    const std::string terminal = Variable("TERM");
    return !terminal.empty() && terminal != "dumb";
}

bool ColoursAreWanted() {
    return Variable("NO_COLOR").empty();
}
