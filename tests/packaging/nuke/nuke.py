# SPDX-License-Identifier: BSD-3-Clause
"""As much of the host's module as start-up scripts use.

NUKE_VERSION (major.minor) and NUKE_GUI (set or not) say which host it is.
"""
import os

NUKE_VERSION_MAJOR, NUKE_VERSION_MINOR = (
    int(number) for number in os.environ["NUKE_VERSION"].split("."))
GUI = "NUKE_GUI" in os.environ

_plugin_path = []
_menus = {}


def pluginPath():
    return list(_plugin_path)


def pluginAddPath(path):
    _plugin_path.insert(0, path)


def pluginExists(name):
    return any(os.path.isfile(os.path.join(folder, name + ".so"))
               for folder in _plugin_path)


class Command(object):
    def __init__(self, name, command, icon):
        self.name = name
        self.command = command
        self.icon = icon


class Menu(object):
    def __init__(self):
        self.commands = []

    def addCommand(self, name, command, icon=None):
        self.commands.append(Command(name, command, icon))

    def findItem(self, name):
        for command in self.commands:
            if command.name == name:
                return command
        return None


def menu(name):
    assert GUI, "menus without a GUI"
    return _menus.setdefault(name, Menu())


class Knob(object):
    def __init__(self, value):
        self._value = value

    def value(self):
        return self._value

    def setValue(self, value):
        self._value = value


# What nodes of a class start with where a site has set it.
defaults = {"starfile": os.environ.get("NUKE_STARFILE", "")}


def createNode(class_name):
    node = {name: Knob(value) for name, value in defaults.items()}
    print("created: " + class_name)
    return node
