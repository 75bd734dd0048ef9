#pragma once

#include <cstddef>
#include <string>

/// How an output for people may look.
struct Style {
    bool colours = false;     ///< may be coloured
    std::size_t columns = 0;  ///< of the terminal; 0 where lines may have any length
};

enum class Colour { kNone, kGood, kBad };

/// The text in a colour, where the style has colours.
std::string Painted(const std::string& text, Colour colour, const Style& style);

/// Whether a terminal understands control sequences, by the environment variable TERM.
bool TerminalHasControls();

/// Whether colours are wanted: unless NO_COLOR is set to anything but an empty text.
bool ColoursAreWanted();
