// SPDX-License-Identifier: BSD-3-Clause

// How the compiler spells functions in messages: g++'s way is the one that users see and tests expect.
//
//     clang                                       g++
//     char *Kess::malloc_pixels(uword)            char* Kess::malloc_pixels(uword)
//     void OSAPI::close_on_exec(OSAPI::fd_t)      void OSAPI::close_on_exec(fd_t)
//     void f(T &) [T = int]                       void f(T&) [with T = int]
#pragma once

#include <cctype>
#include <string>

// A function as g++ spells it.
inline std::string spelled_by_gcc(std::string text) {
#ifdef __clang__
    for (std::size_t at = 0; (at = text.find_first_of("&*", at)) != std::string::npos; at++) {
        if (at > 0 && text[at - 1] == ' ')
            text.erase(--at, 1);
        if (at + 1 < text.size() && std::isalpha(static_cast<unsigned char>(text[at + 1])))
            text.insert(at + 1, " ");
    }
    // Types of the function's own scope are not qualified among its arguments.
    const std::size_t open = text.find('('), name = text.rfind(' ', open) + 1;
    const std::size_t colons = text.rfind("::", open);
    if (open != std::string::npos && colons != std::string::npos && colons > name) {
        const std::string scope = text.substr(name, colons + 2 - name);
        for (std::size_t at = open; (at = text.find(scope, at)) != std::string::npos;)
            text.erase(at, scope.size());
    }
    if (const std::size_t at = text.find(" [");
        at != std::string::npos && text.compare(at, 7, " [with ") != 0)
        text.replace(at, 2, " [with ");
    if (const std::size_t at = text.find("struct ::"); at != std::string::npos)
        text.erase(at, 9);
#endif
    return text;
}

// A message whose function, between " in <" and the last ">", is as g++ spells it.
inline std::string message_spelled_by_gcc(const std::string& message) {
    const std::size_t in = message.rfind(" in <"), end = message.rfind('>');
    if (in == std::string::npos || end == std::string::npos || end < in + 5)
        return message;
    return message.substr(0, in + 5) + spelled_by_gcc(message.substr(in + 5, end - in - 5)) +
           message.substr(end);
}
