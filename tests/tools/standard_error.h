// SPDX-License-Identifier: BSD-3-Clause

// What a test's subject writes to standard error.
#pragma once

#include <cstdio>
#include <string>
#include <unistd.h>

// Standard error while it lives, whatever buffers there are.
class StandardError {
public:
    StandardError() : before(dup(STDERR_FILENO)), file(std::tmpfile()) {
        dup2(fileno(file), STDERR_FILENO);
    }
    StandardError(const StandardError&) = delete;
    StandardError& operator=(const StandardError&) = delete;
    ~StandardError() {
        restore();
        std::fclose(file);
    }

    std::string text() {
        restore();
        std::string bytes;
        std::rewind(file);
        for (int ch; (ch = std::fgetc(file)) != EOF;)
            bytes += char(ch);
        return bytes;
    }

private:
    int before;
    std::FILE* file;

    void restore() {
        if (before == -1)
            return;
        dup2(before, STDERR_FILENO);
        close(before);
        before = -1;
    }
};
