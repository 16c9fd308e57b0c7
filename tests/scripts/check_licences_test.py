#!/usr/bin/env python3
# SPDX-License-Identifier: BSD-3-Clause
"""What scripts/check-licences finds missing, and what its --fix makes of it."""
import pathlib
import subprocess
import sys
import tempfile
import unittest

SCRIPT = pathlib.Path(__file__).resolve().parents[2] / "scripts" / "check-licences"
SPDX = "SPDX-License-Identifier: BSD-3-Clause"

# By name: a file without the line, and the same with it.
FILES = {
    "core/comment.h": ("// A thing.\n#pragma once\n", f"// {SPDX}\n\n// A thing.\n#pragma once\n"),
    "core/include.cpp": ('#include "core/comment.h"\n', f'// {SPDX}\n#include "core/comment.h"\n'),
    "core/empty.inc": ("", f"// {SPDX}\n"),
    "core/other.cpp": ("// SPDX-License-Identifier: MIT\n",
                       f"// {SPDX}\n\n// SPDX-License-Identifier: MIT\n"),
    "CMakeLists.txt": ("# The project.\nproject(x)\n", f"# {SPDX}\n\n# The project.\nproject(x)\n"),
    "cmake/rules.cmake": ("add_library(x)\n", f"# {SPDX}\nadd_library(x)\n"),
    "data/make.py": ('"""Makes."""\n', f'# {SPDX}\n"""Makes."""\n'),
    "scripts/run": ("#!/bin/sh\n# Runs.\ntrue\n", f"#!/bin/sh\n# {SPDX}\n\n# Runs.\ntrue\n"),
    "scripts/late": (f"#!/bin/sh\ntrue\n# {SPDX}\n", f"#!/bin/sh\n# {SPDX}\ntrue\n# {SPDX}\n"),
}
OTHERS = {
    "README.md": "# A page\n",
    "data/stars.csv": "hip\n",
    "fuzz/corpus/script": "#! what a fuzzer found\n",
}


class CheckLicences(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.root = pathlib.Path(folder.name)
        subprocess.run(["git", "init", "-q", self.root], check=True)

    def write(self, files):
        for name, text in files.items():
            (self.root / name).parent.mkdir(parents=True, exist_ok=True)
            (self.root / name).write_text(text)

    def check(self, *options):
        done = subprocess.run([sys.executable, SCRIPT, *options, self.root], capture_output=True, text=True)
        return done.returncode, done.stdout, done.stderr

    def test_names_every_source_without_the_line(self):
        self.write({name: before for name, (before, _) in FILES.items()})
        self.write(OTHERS)
        slashes = (".h", ".cpp", ".inc")
        said = "".join(f"{name}: must start with '{'//' if name.endswith(slashes) else '#'} {SPDX}'\n"
                       for name in sorted(FILES))
        self.assertEqual(self.check(), (1, said, ""))

    def test_fixes_them_once(self):
        self.write({name: before for name, (before, _) in FILES.items()})
        self.write(OTHERS)
        for _ in range(2):
            self.assertEqual(self.check("--fix"), (0, "", ""))
            for name, (_, after) in FILES.items():
                self.assertEqual((self.root / name).read_text(), after, name)
            for name, text in OTHERS.items():
                self.assertEqual((self.root / name).read_text(), text, name)
        self.assertEqual(self.check(), (0, "", ""))


if __name__ == "__main__":
    unittest.main()
