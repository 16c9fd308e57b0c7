// How the compiler spells functions in messages: g++'s way is the one that users see and tests expect.
#pragma once

#include <string>

// `text` with its functions, from `start` on, as g++ spells them: clang has "T &" and "T *" for "T&"
// and "T*", and "[T = int]" for "[with T = int]".
inline std::string spelled_by_gcc(std::string text, std::size_t start = 0) {
#ifdef __clang__
    for (const char* const spelling : {" &", " *"})
        for (std::size_t at = start; (at = text.find(spelling, at)) != std::string::npos;)
            text.erase(at, 1);
    if (const std::size_t at = text.find(" [", start); at != std::string::npos)
        text.replace(at, 2, " [with ");
#else
    (void)start;
#endif
    return text;
}

// A message's functions: what follows " in <".
inline std::string message_spelled_by_gcc(const std::string& message) {
    return spelled_by_gcc(message, message.rfind(" in <"));
}
