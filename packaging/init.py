# SPDX-License-Identifier: BSD-3-Clause
"""Adds the plug-in for the running Nuke to the plug-in path.

Nuke runs this from every folder of NUKE_PATH, with and without a GUI, in
Python 2 up to version 12 and in Python 3 from then on.
"""
import inspect
import os
import re
import sys

import nuke


def _velmora_versions(plugins):
    """The (major, minor) that there are plug-ins for, sorted."""
    versions = []
    for name in os.listdir(plugins) if os.path.isdir(plugins) else []:
        match = re.match(r"nuke(\d+)\.(\d+)$", name)
        if match and os.path.isfile(
                os.path.join(plugins, name, "VelmoraNK.so")):
            versions.append((int(match.group(1)), int(match.group(2))))
    return sorted(versions)


def _velmora_init(home):
    plugins = os.path.join(home, "plugin")
    running = (nuke.NUKE_VERSION_MAJOR, nuke.NUKE_VERSION_MINOR)
    versions = _velmora_versions(plugins)
    if running in versions:
        folder = os.path.join(plugins, "nuke%d.%d" % running)
        if folder not in nuke.pluginPath():
            nuke.pluginAddPath(folder)
        return
    others = ", ".join("%d.%d" % version for version in versions)
    sys.stderr.write(
        "velmora: %s: no plug-in for Nuke %d.%d, %s\n"
        % ((plugins,) + running
           + ("only for " + others if others else "nor for any other",)))


# Nuke does not always define __file__ for a start-up script; its code object has the path.
_velmora_init(os.path.dirname(os.path.abspath(
    inspect.currentframe().f_code.co_filename)))
