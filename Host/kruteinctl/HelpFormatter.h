#pragma once

#include <CLI/CLI.hpp>
#include <string>

/// The help texts: 80 columns at most, whatever is read on.
class HelpFormatter : public CLI::Formatter {
 public:
    HelpFormatter();

    std::string make_option_opts(const CLI::Option* option) const override;
    std::string make_option_desc(const CLI::Option* option) const override;
};
