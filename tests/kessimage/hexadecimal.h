// SPDX-License-Identifier: BSD-3-Clause

// An address as printf's %p writes it.
#pragma once

#include <cstdint>
#include <cstdio>
#include <string>

inline std::string hexadecimal(const void* pointer) {
    char text[40];
    snprintf(text, sizeof text, "0x%llx",
             static_cast<unsigned long long>(reinterpret_cast<std::uintptr_t>(pointer)));
    return text;
}
