// What was called of the ops of the recording plug-in, one line for each call.
//
// Threads:   any.
#pragma once

#include <string>
#include <vector>

void log_call(const std::string& call);

// All calls since the last time this was asked.
std::vector<std::string> taken_calls();
