# SPDX-License-Identifier: BSD-3-Clause
"""Starts up as the host does and tells what came of it: start.py SCRIPT...

The scripts run one after the other without being told where they lie. Then
every command of the Nodes menu is invoked.
"""
import sys

import nuke

for script in sys.argv[1:]:
    with open(script) as source:
        code = compile(source.read(), script, "exec")
    exec(code, {"__name__": "__main__"})

for folder in nuke.pluginPath():
    print("plug-in path: " + folder)
if nuke.GUI:
    for item in nuke.menu("Nodes").commands:
        print("menu: %s with %s" % (item.name, item.icon))
        node = item.command()
        print("starfile: " + node["starfile"].value())
