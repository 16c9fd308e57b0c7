// SPDX-License-Identifier: BSD-3-Clause

// The options that choose what is rendered (sky, knobs and camera), for every command with a comp.
//
// Ownership: options are stored in the structures given, which must outlive the parsing.
// Errors:    the checks end in CLI::ValidationError, lists of the wrong length in UsageFailure.
#pragma once

#include "tools/comp/comp.h"

#include <CLI/CLI.hpp>
#include <string>

namespace velmora {

// Checks of a single word: what is wrong with it, or "".
std::string refuse_empty(const std::string& text);
std::string refuse_other_than_number(const std::string& text);

template <class Value>
CLI::Option* add_text(CLI::App& command, const char* name, Value& value, const char* takes,
                      const char* text) {
    return command.add_option(name, value, text)->check(refuse_empty, "")->type_name(takes);
}

template <class Value>
CLI::Option* add_number(CLI::App& command, const char* name, Value& value, const char* text) {
    return command.add_option(name, value, text)
        ->check(refuse_other_than_number, "")
        ->type_name("NUMBER");
}

void add_comp_options(CLI::App& command, CompOptions& options);

} // namespace velmora
