#!/usr/bin/env python3
"""Holds the tables of link targets in docs/architecture.md against the code: what each target links, and what its
sources and headers include. Run it from anywhere; it prints each difference and exits 1 when there is one."""
import pathlib
import re
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
SOURCES = ROOT / "src"
# Which sources stand behind it is the programs' choice: theirs, or a test's own.
CHOSEN_BY_PROGRAMS = {"resources/embedded_resources.h"}


def described():
    """Target -> the targets of ours that the documents say it links."""
    rows = re.findall(r"^\| `(permora[\w-]*)` \|.*\| (.*) \|$", (ROOT / "docs/architecture.md").read_text(), re.MULTILINE)
    return {target: set(re.findall(r"`(permora[\w-]*)`", links)) for target, links in rows}


def built():
    """Target -> the targets of ours that it links, and source file -> its target, both for all systems and options."""
    links, owners = {}, {}
    for file in SOURCES.rglob("CMakeLists.txt"):
        text = re.sub(r"#.*", "", file.read_text())
        for command, words in re.findall(r"(\w+)\s*\(([^()]*)\)", text):
            target, *rest = words.split() or [""]
            if command in ("add_library", "add_executable") and target.startswith("permora"):
                links.setdefault(target, set())
            if command == "target_link_libraries":
                links.setdefault(target, set()).update(word for word in rest if word.startswith("permora"))
            if command in ("add_library", "add_executable", "target_sources"):
                owners.update({(file.parent / word).resolve(): target for word in rest if word.endswith(".cpp")})
    own = set(owners.values()) | {"permora_resources"}
    return {target: links[target] & own for target in own}, owners


def closures(links):
    """Target -> itself and all that it links, however far down."""
    found = {}

    def below(target):
        if target not in found:
            found[target] = {target}
            found[target].update(*(below(each) for each in links.get(target, ())))
        return found[target]

    for target in links:
        below(target)
    return found


def targets_of(file, owners):
    """Of a header without a source of its name: all targets that its folder has sources of, or else the folder above."""
    own = owners.get(file.with_suffix(".cpp"))
    if own:
        return {own}
    folder = file.parent
    while folder != SOURCES:
        found = {target for source, target in owners.items() if source.parent == folder}
        if found:
            return found
        folder = folder.parent
    return set()


INCLUDE = re.compile(r'^#include "(.+)"', re.MULTILINE)


def is_of_no_layer(header):
    """Constants and plain values, whoever they are for: nothing of ours stands behind them."""
    return not header.with_suffix(".cpp").exists() and not INCLUDE.search(header.read_text())


def main():
    problems = []
    said, (links, owners) = described(), built()
    ours = set(links) & set(said)
    for target in sorted(set(links) - ours):
        problems.append(f"docs/architecture.md has no row for {target}")
    for target in sorted(set(said) - set(links)):
        problems.append(f"docs/architecture.md has a row for {target}, which nobody builds")
    reached_in_words, reached = closures(said), closures(links)
    for target in sorted(ours):
        for each in sorted(reached[target] - reached_in_words[target]):
            problems.append(f"{target} links {each}, which is not in docs/architecture.md")
        for each in sorted(reached_in_words[target] - reached[target]):
            problems.append(f"{target} does not link {each}, as docs/architecture.md says")

    files = [file for file in SOURCES.rglob("*") if file.suffix in (".cpp", ".h")]
    for file in sorted(files):
        targets = targets_of(file, owners)
        if not targets:
            problems.append(f"{file.relative_to(ROOT)} belongs to no target")
            continue
        allowed = set().union(*(reached[target] for target in targets))
        for include in INCLUDE.findall(file.read_text()):
            header = SOURCES / include
            is_free = include in CHOSEN_BY_PROGRAMS or not header.exists() or is_of_no_layer(header)
            if not is_free and not targets_of(header, owners) & allowed:
                problems.append(f"{file.relative_to(ROOT)} includes {include}, of a layer that it does not link")

    print("\n".join(problems), end="\n" if problems else "")
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())
