#!/usr/bin/env python3
# SPDX-License-Identifier: BSD-3-Clause
"""Runs scripts/mutate over a project of one function, whose survivors are known."""
import os
import shutil
import subprocess
import tempfile
import unittest
from pathlib import Path

SCRIPT = Path(__file__).resolve().parents[2] / "scripts" / "mutate"

PROJECT = {
    "CMakeLists.txt": """
        cmake_minimum_required(VERSION 3.25)
        project(small LANGUAGES CXX)
        function(velmora_test_program name)
            add_executable(${name} ${ARGN})
        endfunction()
        add_subdirectory(tests/small)
        """,
    "CMakePresets.json": """
        {
            "version": 5,
            "configurePresets": [
                {"name": "release", "generator": "Ninja", "binaryDir": "${sourceDir}/build/release"},
                {"name": "asan", "inherits": "release", "binaryDir": "${sourceDir}/build/asan",
                 "cacheVariables": {"CMAKE_CXX_FLAGS": "-fsanitize=address"}}
            ]
        }
        """,
    "tests/small/CMakeLists.txt": """
velmora_test_program(small_tests limit_test.cpp ../../small/limit.cpp)
""",
    "small/limit.cpp": """\
#include <cstdlib>
int limited(int value) {
    void* volatile block = malloc(9);
    free(block);
    if (value > 7)
        return 7;
    return value;
}
""",
    "tests/small/limit_test.cpp": """
        int limited(int value);
        int main() { return limited(3) == 3 && limited(9) == 7 ? 0 : 1; }
        """,
}

# No value tells the first from what was there; the test leaves out 8, which tells the second.
EQUIVALENT = """\
      free(block);
    - if (value > 7)
    + if (value >= 7)
"""
UNTESTED = """\
      free(block);
    - if (value > 7)
    + if (value > 8)
"""
SIZE = """\
      int limited(int value) {
    - void* volatile block = malloc(9);
    + void* volatile block = malloc(10);
"""
LEAK = """\
      void* volatile block = malloc(9);
    - free(block);
    + ;
"""


class Mutate(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory(prefix="mutate-test-")
        self.addCleanup(folder.cleanup)
        self.root = Path(folder.name)
        for name, text in PROJECT.items():
            self.write(name, text)
        (self.root / "scripts").mkdir()
        shutil.copy(SCRIPT, self.root / "scripts")
        self.git("init", "--quiet")
        self.git("add", "--all")
        self.git("-c", "user.name=test", "-c", "user.email=test", "commit", "--quiet", "-m", "all")

    def write(self, name, text):
        path = self.root / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(text)

    def git(self, *arguments):
        return subprocess.run(["git", *arguments], cwd=self.root, check=True, capture_output=True,
                              text=True).stdout

    def mutate(self, *arguments):
        done = subprocess.run([self.root / "scripts" / "mutate", *arguments], capture_output=True,
                              text=True, env=dict(os.environ, LC_ALL="C"))
        return done.returncode, done.stdout, done.stderr

    def test_names_what_no_test_notices(self):
        status, text, _ = self.mutate("small", "--quick", "--jobs", "1")
        self.assertEqual(text, f"small/limit.cpp:3: survived\n{SIZE}"
                               f"small/limit.cpp:4: survived\n{LEAK}"
                               f"small/limit.cpp:5: survived\n{EQUIVALENT}"
                               f"small/limit.cpp:5: survived\n{UNTESTED}"
                               "6 planted: 2 killed, 0 not built, 4 survived; 0 accepted\n")
        self.assertEqual(status, 1)
        self.assertEqual(self.git("status", "--porcelain"), "")
        self.assertEqual(len(self.git("worktree", "list").splitlines()), 1)

    def test_ends_without_survivors_once_they_are_tested_or_accepted(self):
        # Not committed: what the working tree holds counts.
        self.write("tests/small/limit_test.cpp",
                   PROJECT["tests/small/limit_test.cpp"].replace("&&", "&& limited(8) == 7 &&"))
        self.write("scripts/mutate.accepted", "# The limit itself is no matter.\n"
                                              f"small/limit.cpp\n{EQUIVALENT}    = gives 7\n"
                                              f"{SIZE}    = not used\n")
        status, text, errors = self.mutate("small/limit.cpp")
        self.assertEqual(text, "4 planted: 4 killed, 0 not built, 0 survived; 2 accepted\n"
                               "no survivors\n", errors)
        self.assertEqual(status, 0)

    def test_refuses_accepted_changes_that_are_no_more(self):
        change = EQUIVALENT.replace("7", "6")
        self.write("scripts/mutate.accepted", f"small/limit.cpp\n{change}    = gives 6\n")
        self.assertEqual(self.mutate("small"), (
            2, "", "mutate: mutate.accepted: small/limit.cpp has no such change any more:\n"
                   + change))

    def test_refuses_tests_that_fail_without_a_change(self):
        self.write("tests/small/limit_test.cpp", """
            #include <cstdio>
            int limited(int) { return 0; }
            int main() { return puts("seven is missing") < 0 || true; }
            """)
        self.write("tests/small/CMakeLists.txt", "velmora_test_program(small_tests limit_test.cpp)\n")
        status, text, errors = self.mutate("small")
        self.assertEqual((status, text), (2, ""))
        self.assertRegex(errors, "^mutate: .*small_tests.*\nseven is missing\n$")

    def test_refuses_what_is_not_in_the_tree(self):
        for name in ("none", "..", "/"):
            self.assertEqual(self.mutate(name), (
                2, "", f"mutate: {name}: no such file or folder of this tree\n"))

    def test_lists_what_a_seed_draws(self):
        def drawn(*arguments):
            status, text, _ = self.mutate("small", "--list", *arguments)
            self.assertEqual(status, 0)
            return text.split("small/limit.cpp:")[1:]

        everything = drawn()
        self.assertEqual(len(everything), 6)
        few = drawn("--count", "3", "--seed", "5")
        self.assertEqual(few, drawn("--count", "3", "--seed", "5"))
        self.assertEqual(few, [change for change in everything if change in few])
        self.assertEqual(len(few), 3)
        self.assertGreater(len({tuple(drawn("--count", "3", "--seed", str(n)))
                                for n in range(4)}), 1)


if __name__ == "__main__":
    unittest.main()
