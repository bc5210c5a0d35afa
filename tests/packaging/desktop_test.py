#!/usr/bin/env python3
"""Judges what an installation tells the desktop: desktop_test.py PREFIX."""

import os
import subprocess
import sys
import tempfile
import types
import xml.etree.ElementTree as xml
from pathlib import Path

prefix = Path(sys.argv[1])
share = prefix / "share"


def run(*command, **options):
    return subprocess.run(command, check=True, text=True, stdout=subprocess.PIPE, **options).stdout


def expect(is_true, text):
    if not is_true:
        sys.exit(text)


# The judges of the desktop's own rules.
run("desktop-file-validate", share / "applications/permora.desktop")
run("appstreamcli", "validate", "--no-net", share / "metainfo/example.valdrix.Permora.metainfo.xml")
for size in (16, 22, 24, 32, 48, 64, 96, 128, 256, 512):
    picture = (share / f"icons/hicolor/{size}x{size}/apps/permora.png").read_bytes()
    expect(picture[16:24] == size.to_bytes(4, "big") * 2, f"the icon of {size} pixels has another size")

# The action is for the program that was installed.
policy = xml.parse(share / "polkit-1/actions/example.valdrix.permora.policy")
annotations = {each.get("key").rsplit(".", 1)[1]: each.text for each in policy.iter("annotate")}
expect(annotations == {"path": str(prefix / "lib/permora/permora"), "allow_gui": "true"}, annotations)
expect(os.access(annotations["path"], os.X_OK), "there is no such program")

# Saved lists are known by their beginning, and by their name. They are opened with the program, and folders are not.
with tempfile.TemporaryDirectory() as folder:
    run("cp", "-r", share / "mime", folder)
    run("cp", "/usr/share/mime/packages/freedesktop.org.xml", Path(folder) / "mime/packages")
    run("update-mime-database", Path(folder) / "mime", stderr=subprocess.DEVNULL)
    run("cp", "-r", share / "applications", folder)
    run("update-desktop-database", Path(folder) / "applications")
    nothing = {f"XDG_{place}": f"{folder}/none" for place in ("DATA_HOME", "CONFIG_HOME", "CONFIG_DIRS")}
    programs = f"{prefix}/bin:{os.environ['PATH']}"
    places = dict(os.environ, PATH=programs, XDG_DATA_DIRS=folder, **nothing)
    for kind, program in (("application/x-permora-lists", True), ("inode/directory", False)):
        said = run("gio", "mime", kind, env=places)
        expect(("permora.desktop" in said) == program, f"what {kind} is opened with: {said}")
    for name, text, kind in (
        ("saved", "permora-lists 1\n", "application/x-permora-lists"),
        ("new.lists", "in another form\n", "application/x-permora-lists"),
        ("letter", "Dear permora-lists\n", "text/plain"),
    ):
        file = Path(folder) / name
        file.write_text(text)
        said = run("gio", "info", "-a", "standard::content-type", file, env=places)
        expect(f"content-type: {kind}\n" in said, f"{name} is not {kind}: {said}")


# The menus of file managers, which are stood in for.
class Item:
    def __init__(self, **texts):
        self.label = texts["label"]

    def connect(self, signal, action, *arguments):
        expect(signal == "activate", signal)
        self.activate = lambda: action(self, *arguments)


class File:
    def __init__(self, path, scheme="file"):
        self.get_uri_scheme = lambda: scheme
        self.get_location = lambda: types.SimpleNamespace(get_path=lambda: path)


started = []
manager = types.SimpleNamespace(MenuProvider=type("Provider", (), {}), MenuItem=Item)
gio = types.SimpleNamespace(
    Subprocess=types.SimpleNamespace(new=lambda command, flags: started.append(command)),
    SubprocessFlags=types.SimpleNamespace(NONE=0),
)
repository = types.ModuleType("gi.repository")
repository.Gio, repository.GLib = gio, types.SimpleNamespace(Error=OSError)
repository.GObject = types.SimpleNamespace(GObject=type("GObject", (), {}))
repository.Nautilus = repository.Caja = repository.Thunarx = manager
sys.modules["gi"], sys.modules["gi.repository"] = types.ModuleType("gi"), repository

for folder, method, before in (
    ("nautilus-python", "get_file_items", []),
    ("nautilus-python", "get_file_items", ["window"]),
    ("caja-python", "get_file_items", ["window"]),
    ("thunarx-python", "get_file_menu_items", ["window"]),
):
    source = share / folder / "extensions/permora_menu.py"
    module = {}
    exec(compile(source.read_text(), str(source), "exec"), module)
    items_for = getattr(module["PermoraMenu"](), method)
    expect(items_for(*before, []) == [], "an entry without a selection")
    expect(items_for(*before, [File("/a"), File("/b", "sftp")]) == [], "an entry for another machine's file")
    (item,) = items_for(*before, [File("/a b"), File("/-x")])
    expect(item.label == "Permissions of Windows...", item.label)
    item.activate()
    expect(started.pop() == ["permora", "--permissions", "--", "/a b", "/-x"], f"{folder} started something else")
print("Passed")
