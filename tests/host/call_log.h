// SPDX-License-Identifier: BSD-3-Clause

// The calls that the recording plug-in's ops received, a line each.
//
// Threads:   any.
#pragma once

#include <string>
#include <vector>

void log_call(const std::string& call);

// The calls since this was last called.
std::vector<std::string> taken_calls();
