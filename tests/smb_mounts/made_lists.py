"""Writes access lists, made by chance, as text that is put back on a tree: made_lists.py SEED NAME FILE.

Makes no objects: prints the tree's folders and files, one a line, folders with a slash at the end.
"""
import random
import sys

ACCOUNTS = ["WD", "AU", "BU", "BG", "SY", "CO", "CG", "OW", "S-1-5-32-551", "S-1-5-11", "S-1-5-21-1-2-3-1001",
            "S-1-5-21-1-2-3-1002", "S-1-5-80-1-2-3-4-5", "S-1-22-1-1000", "S-1-22-2-100"]
FOLDER_FLAGS = ["", "OI", "CI", "OICI", "OICIIO", "CIIO", "OICINP", "CINP"]
MASKS = [0x1F01FF, 0x1301BF, 0x1200A9, 0x120116, 0x100000, 0x10000, 0x40000, 0x80000, 0x1, 0x2]


def entry(chance, is_folder):
    mask = chance.choice(MASKS) | chance.getrandbits(9) * chance.randint(0, 1)
    flags = chance.choice(FOLDER_FLAGS) if is_folder else ""
    return f"({chance.choice('AAAD')};{flags};{mask:#x};;;{chance.choice(ACCOUNTS)})"


def access_list(chance, is_folder):
    control = chance.choice(["P", "PAI", "AI", ""])
    entries = [entry(chance, is_folder) for _ in range(chance.choice([0, 1, 2, 3, 5, 8, 40]))]
    entries.sort(key=lambda each: each[1] == "A")  # denials first, as every editor puts them
    return f"D:{control}" + "".join(entries)


def main():
    chance = random.Random(int(sys.argv[1]))
    top = sys.argv[2]
    objects = [("", True)]
    for folder in range(25):
        objects.append((f"folder {folder}", True))
        objects += [(f"folder {folder}\\file {file}", False) for file in range(11)]
    with open(sys.argv[3], "w", encoding="utf-16-le", newline="") as text:
        for name, is_folder in objects:
            path = top + ("\\" + name if name else "")
            text.write(f"{path}\r\n{access_list(chance, is_folder)}\r\n")
    for name, is_folder in objects[1:]:
        print(name.replace("\\", "/") + ("/" if is_folder else ""))


main()
