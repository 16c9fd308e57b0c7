# SPDX-License-Identifier: BSD-3-Clause
"""Adds the node to the Nodes menu, under Draw.

Nuke runs this after init.py, and only when it has a GUI.
"""
import inspect
import os

import nuke


def _velmora_menu(home):
    if not nuke.GUI or not nuke.pluginExists("VelmoraNK"):
        return
    icons = os.path.join(home, "icons")
    database = os.path.join(home, "share", "velmora", "stars.velmora")

    def create():
        """A new node, with the bundled stars unless it has others already."""
        node = nuke.createNode("VelmoraNK")
        if not node["starfile"].value() and os.path.isfile(database):
            node["starfile"].setValue(database)
        return node

    if icons not in nuke.pluginPath():
        nuke.pluginAddPath(icons)
    nodes = nuke.menu("Nodes")
    if not nodes.findItem("Draw/VelmoraNK"):
        nodes.addCommand("Draw/VelmoraNK", create, icon="VelmoraNK.png")


# Nuke does not always define __file__ for a start-up script; its code object has the path.
_velmora_menu(os.path.dirname(os.path.abspath(
    inspect.currentframe().f_code.co_filename)))
