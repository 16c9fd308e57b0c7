#!/usr/bin/env python3
# SPDX-License-Identifier: BSD-3-Clause
"""What scripts/check-returns refuses, and what it lets pass."""
import pathlib
import subprocess
import tempfile
import unittest

SCRIPT = pathlib.Path(__file__).resolve().parents[2] / "scripts" / "check-returns"

# Sources with a return that is refused: its line, and what lives there.
REFUSED = {
    "a returned local beside a descriptor, in a try": (6, "file", """
std::string read(const char* path) {
    try {
        OSAPI::DiskFile file;
        file.init(OSAPI::open(path, 1));
        return std::string();
    } catch (const Xception&) {
        throw;
    }
}
"""),
    "the same without a try": (4, "mapping", """
DatabaseInfo inspect(const char* path) {
    const OSAPI::FileMapping mapping(path, OSAPI::OPEN_READ);
    return inspect_bytes(mapping.data);
}
"""),
    "in a block within": (5, "out", """
String read() {
    BufferedFileOutput out(1, 100, true);
    if (out.fd == 0) {
        return String("x");
    }
    out.close();
    return String("y");
}
"""),
    "a value made in braces": (4, "file", """
std::vector<int> sizes() {
    FileDescriptor file(3);
    return {1, 2};
}
"""),
    "in a lambda, whose type nobody sees": (4, "file", """
void work() {
    run([&](int n) {
        OSAPI::FileDescriptor file(n); return text_of(file);
    });
}
"""),
    "an object that holds one": (6, "holder", """
class Holder {
    OSAPI::FileDescriptor file;
};
std::string f() {
    Holder holder; return holder.text();
}
"""),
    "only another one is closed": (5, "b", """
std::string f() {
    FileDescriptor a(1), c(2); FileDescriptor b(2);
    a.close();
    return "x";
}
"""),
}

PASSING = {
    "closed before": """
std::string f() {
    OSAPI::FileDescriptor file(3);
    file.close();
    return text;
}
""",
    "in a block that ends before": """
std::string f() {
    {
        OSAPI::FileDescriptor file(3);
    }
    return text;
}
""",
    "numbers, pointers, references and nothing": """
int f() { FileDescriptor file(3); return 1; }
static OSAPI::fd_t g() { FileDescriptor file(3); return 1; }
const char* h() { FileDescriptor file(3); return nullptr; }
Thing& i() { FileDescriptor file(3); return thing; }
void j() { FileDescriptor file(3); if (x) return; done(); }
bool Class::k(int n) const { FileDescriptor file(3); return n > 1; }
""",
    "a lambda of its own": """
void f() {
    FileDescriptor file(3);
    run([&] { return name(3); });
}
""",
    "comments, texts and other objects": """
std::string f() {
    // FileDescriptor file(3);
    const std::string text = "{ FileDescriptor file(3);"; std::unique_ptr<FileDescriptor> owned;
    return text;
}
""",
    "another function after": """
void f() { FileDescriptor file(3); }
std::string g() { return text; }
""",
}


def check(source):
    with tempfile.TemporaryDirectory() as folder:
        path = pathlib.Path(folder, "planted.cpp")
        path.write_text(source)
        done = subprocess.run([SCRIPT, path], capture_output=True, text=True)
        return done.returncode, done.stdout.replace(str(path), "planted.cpp"), done.stderr


class CheckReturns(unittest.TestCase):
    def test_refuses_a_value_returned_beside_what_may_throw(self):
        for what, (line, name, source) in REFUSED.items():
            with self.subTest(what):
                self.assertEqual(check(source), (1, (
                    f"planted.cpp:{line}: returns a value while '{name}' may throw on its "
                    "release: close it, or end its block, first\n"), ""))

    def test_lets_other_returns_pass(self):
        for what, source in PASSING.items():
            with self.subTest(what):
                self.assertEqual(check(source), (0, "", ""))


if __name__ == "__main__":
    unittest.main()
