// SPDX-License-Identifier: BSD-3-Clause

// Help texts that show examples first: an app's footer holds them and is printed above the usage.
//
// Ownership: a formatter is shared by the program and its commands.
#pragma once

#include <CLI/CLI.hpp>
#include <string>

namespace velmora {

// To be set on the program before its commands are added, which inherit it.
class ExamplesFirst : public CLI::Formatter {
public:
    std::string make_usage(const CLI::App* app, std::string name) const override {
        const std::string& examples = app->get_footer();
        return (examples.empty() ? "" : "\n" + examples + "\n\n") +
               CLI::Formatter::make_usage(app, name);
    }
    std::string make_footer(const CLI::App*) const override { return ""; }
};

} // namespace velmora
