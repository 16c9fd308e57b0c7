#!/usr/bin/env python3
# SPDX-License-Identifier: BSD-3-Clause
"""What scripts/check-includes refuses in a planted tree, and what it lets pass."""
import pathlib
import subprocess
import sys
import tempfile
import unittest

SCRIPT = pathlib.Path(__file__).resolve().parents[2] / "scripts" / "check-includes"

# By kind: the file, its text, and what is said of it.
REFUSED = {
    "a quoted include, upwards": (
        "core/planted.h", '#include "stars/stars.h"\n',
        'core/planted.h:1: core must not include "stars/stars.h"'),
    "one in angle brackets": (
        "osapi/planted.cpp", "#include <stdio.h>\n\n#include <kessimage/image.h>\n",
        'osapi/planted.cpp:3: osapi must not include "kessimage/image.h"'),
    "one in a file of kernels": (
        "stars/planted.inc", '#include "tools/help.h"\n',
        'stars/planted.inc:1: stars must not include "tools/help.h"'),
    "one in a folder further down": (
        "stars/deep/inside/planted.h", '#include "node/VelmoraNK.h"\n',
        'stars/deep/inside/planted.h:1: stars must not include "node/VelmoraNK.h"'),
    "one that is written with blanks": (
        "catalog/planted.cpp", '  #  include  "tools/help.h"\n',
        'catalog/planted.cpp:1: catalog must not include "tools/help.h"'),
    "a header beside the one that is allowed": (
        "catalog/planted.cpp", '#include "stars/stars.h"\n',
        'catalog/planted.cpp:1: catalog must not include "stars/stars.h"'),
    "the host's interface, below the node": (
        "stars/planted.cpp", "#include <DDImage/Op.h>\n",
        'stars/planted.cpp:1: stars must not include "host/DDImage/Op.h"'),
    "the host, in the node": (
        "node/planted.cpp", '#include "host/graph.h"\n',
        'node/planted.cpp:1: node must not include "host/graph.h"'),
    "the node, in the program that only loads it": (
        "tools/planted.cpp", '#include "node/VelmoraNK.h"\n',
        'tools/planted.cpp:1: tools must not include "node/VelmoraNK.h"'),
    "ours, in the host": (
        "host/planted.cpp", '#include "stars/starfile.h"\n',
        'host/planted.cpp:1: host must not include "stars/starfile.h"'),
    "the fast wing, in the plain one": (
        "stars/plain/planted.cpp", '#include "stars/fast/rasterise.h"\n',
        'stars/plain/planted.cpp:1: stars/plain must not include "stars/fast/rasterise.h"'),
    "the plain wing, in the fast one": (
        "stars/fast/planted.inc", "#include <stars/plain/rasterise.h>\n",
        'stars/fast/planted.inc:1: stars/fast must not include "stars/plain/rasterise.h"'),
    "the facade, in the plain wing": (
        "stars/plain/planted.h", '#include "stars/stars.h"\n',
        'stars/plain/planted.h:1: stars/plain must not include "stars/stars.h"'),
    "the facade, in the fast wing": (
        "stars/fast/planted.h", '#include "stars/streak.h"\n',
        'stars/fast/planted.h:1: stars/fast must not include "stars/streak.h"'),
    "a wing, in what both are written with": (
        "stars/footprint.h", '#include "stars/plain/rasterise.h"\n',
        'stars/footprint.h:1: stars/footprint.h must not include "stars/plain/rasterise.h"'),
    "the facade, in what both are written with": (
        "stars/starfile.cpp", '#include "stars/stars.h"\n',
        'stars/starfile.cpp:1: stars/starfile.cpp must not include "stars/stars.h"'),
    "the runtime, in the host's interface": (
        "host/DDImage/planted.cpp", '#include "host/runtime/graph.h"\n',
        'host/DDImage/planted.cpp:1: host/DDImage must not include "host/runtime/graph.h"'),
    "ours, in the host's runtime": (
        "host/runtime/planted.cpp", '#include "core/string.h"\n',
        'host/runtime/planted.cpp:1: host/runtime must not include "core/string.h"'),
    "a program, in a reader of catalogues": (
        "catalog/readers/planted.cpp", '#include "tools/say.h"\n',
        'catalog/readers/planted.cpp:1: catalog/readers must not include "tools/say.h"'),
    "a reader of catalogues, in the import": (
        "catalog/planted.cpp", '#include "catalog/readers/star_table.h"\n',
        'catalog/planted.cpp:1: catalog must not include "catalog/readers/star_table.h"'),
    "a command, in what commands are made of": (
        "tools/frames/planted.cpp", '#include "tools/commands/render.h"\n',
        'tools/frames/planted.cpp:1: tools/frames must not include "tools/commands/render.h"'),
    "anything of ours, at the bottom": (
        "text/planted.h", '#include "core/types.h"\n',
        'text/planted.h:1: text must not include "core/types.h"'),
    "a root that is not ours": (
        "core/planted.cpp", '#include "boost/any.hpp"\n',
        'core/planted.cpp:1: "boost/any.hpp" does not start at a folder of ours'),
    "a header named without its folder": (
        "core/planted.cpp", '#include "string.h"\n',
        'core/planted.cpp:1: "string.h" does not start at a folder of ours'),
    "a test's header": (
        "core/planted.cpp", '#include "tests/scratch_folder.h"\n',
        'core/planted.cpp:1: "tests/scratch_folder.h" does not start at a folder of ours'),
    "a way round": (
        "core/planted.cpp", '#include "core/../stars/stars.h"\n',
        'core/planted.cpp:1: "core/../stars/stars.h" is not the shortest path'),
    "a way round in angle brackets": (
        "core/planted.cpp", "#include <core/./string.h>\n",
        'core/planted.cpp:1: "core/./string.h" is not the shortest path'),
    "a folder without a rule": (
        "extras/planted.cpp", "int planted;\n",
        "extras/planted.cpp: no rule says what extras may include"),
}

PASSING = {
    "its own folder, and those below": (
        "stars/planted.cpp",
        '#include "stars/stars.h"\n#include "kessimage/image.h"\n#include <core/string.h>\n'),
    "headers of others": (
        "core/planted.cpp", "#include <string.h>\n#include <sys/stat.h>\n#include <zlib.h>\n"),
    "the one header that is allowed": (
        "catalog/planted.cpp", '#include "stars/starfile.h"\n'),
    "the host's interface, in the node": (
        "node/planted.cpp", "#include <DDImage/Op.h>\n"),
    "the interface, in its runtime": (
        "host/runtime/planted.cpp", "#include <DDImage/Op.h>\n"),
    "both wings, in the facade": (
        "stars/planted.cpp",
        '#include "stars/plain/rasterise.h"\n#include "stars/fast/rasterise.h"\n'),
    "what both wings use": (
        "stars/fast/planted.inc", '#include "stars/footprint.h"\n'),
    "an include in a comment": (
        "core/planted.cpp", '// #include "stars/stars.h"\n'),
    "tests, which include what they like": (
        "tests/core/planted.cpp", '#include "stars/stars.h"\n#include "scratch.h"\n'),
    "files that are not sources": (
        "core/CMakeLists.txt", '#include "stars/stars.h"\n'),
}


def check(name, text):
    """Exit status, output and errors of the check of a tree with one file."""
    with tempfile.TemporaryDirectory() as folder:
        file = pathlib.Path(folder, name)
        file.parent.mkdir(parents=True)
        file.write_text(text)
        done = subprocess.run([sys.executable, SCRIPT, folder], capture_output=True, text=True)
        return done.returncode, done.stdout, done.stderr


class CheckIncludes(unittest.TestCase):
    def test_refuses_each_planted_violation(self):
        for kind, (name, text, complaint) in REFUSED.items():
            with self.subTest(kind):
                self.assertEqual(check(name, text), (1, complaint + "\n", ""))

    def test_lets_other_includes_pass(self):
        for kind, (name, text) in PASSING.items():
            with self.subTest(kind):
                self.assertEqual(check(name, text), (0, "", ""))


if __name__ == "__main__":
    unittest.main()
