#!/usr/bin/env python3
"""Completion as a user has it: types into bash, zsh and fish on a terminal of their own, and looks at the arguments that
a command then gets.
    completion_test.py CMAKE BUILD_FOLDER
"""
import os
import pty
import select
import shutil
import signal
import subprocess
import sys
import tempfile
import time

PATIENCE = 120  # seconds, on a machine that is busy with other tests
TAB, LINE_START, CLEAR = "\t", "\x01", "\x05\x15"

ODD_NAME = "odd $(touch hacked) `touch hacked`;touch hacked 'a\"b"
USERS = r"BUILTIN\Users"

# What is typed, and the arguments that come of it. {TAB} stands for the key.
EVERYWHERE = [
    ("permora-cli gra{TAB}", ["grant"]),
    ("permora-cli shares sh{TAB}", ["shares", "show"]),
    ("permora-cli grant --acc{TAB}", ["grant", "--account"]),
    ("permora-cli find --nu{TAB}", ["find", "--null"]),
    ("permora-cli show pla{TAB}", ["show", "plain"]),
    ("permora-cli show with{TAB}", ["show", "with blanks"]),
    ("permora-cli show od{TAB}", ["show", ODD_NAME]),
    ("permora-cli show --json -- 'a f{TAB}", ["show", "--json", "--", "a file"]),
    ("permora-cli restore pla{TAB}", ["restore", "plain"]),
    ("permora-cli save plain --output pla{TAB}", ["save", "plain", "--output", "plain"]),
    ("permora-cli clone --from=pla{TAB}", ["clone", "--from=plain"]),
    (r"permora-cli grant plain --account BUILTIN\\Us{TAB}", ["grant", "plain", "--account", USERS]),
    ("permora-cli grant --account 'BUILTIN\\Us{TAB}", ["grant", "--account", USERS]),
    ("permora-cli grant --account Every{TAB}", ["grant", "--account", "Everyone"]),
    ("permora-cli restore plain --map Every{TAB}Gues{TAB}", ["restore", "plain", "--map", "Everyone=Guests"]),
    ("permora-cli grant --rights Full{TAB}", ["grant", "--rights", "Full control"]),
    (r"permora-cli grant --rights Read\ attributes,Ta{TAB}", ["grant", "--rights", "Read attributes,Take ownership"]),
    ("permora-cli grant --rights=Take{TAB}", ["grant", "--rights=Take ownership"]),
    ("permora-cli grant plain --scope Files{TAB}", ["grant", "plain", "--scope", "Files only"]),
    ("permora-cli assign plain --combination Mod{TAB}", ["assign", "plain", "--combination", "Modify"]),
    ("permora-cli report plain --only open-to-all,null{TAB}", ["report", "plain", "--only", "open-to-all,null-list"]),
    ("permora-cli save plain --format ica{TAB}", ["save", "plain", "--format", "icacls"]),
    ("permora-cli undo 1{TAB}", ["undo", "1"]),
    ("permora --perm{TAB}", ["--permissions"]),
    ("permora --permissions with{TAB}", ["--permissions", "with blanks"]),
]
LISTED = "permora-cli grant --rights 'Read attributes,Read p{TAB}"
ALSO = {
    "bash": [
        (LISTED, ["grant", "--rights", "Read attributes,Read permissions"]),
        ('permora-cli grant --rights "Full{TAB}', ["grant", "--rights", "Full control"]),
        ("permora-cli grant --rights 'Read attributes',Ta{TAB}", ["grant", "--rights", "Read attributes,Take ownership"]),
        ('permora-cli grant --account "BUILTIN\\\\Us{TAB}', ["grant", "--account", USERS]),
    ],
    "zsh": [
        (LISTED + "'", ["grant", "--rights", "Read attributes,Read permissions"]),  # it waits for another comma
    ],
    "fish": [(LISTED, ["grant", "--rights", "Read attributes,Read permissions"])],
}


def Files(home, programs, share):
    """The settings of each shell: the completion that was installed, and a function that saves its arguments."""
    save = 'args() { printf "%s\\0" "$@" >answer.new; mv answer.new answer; }\n'
    return {
        "bash": (["bash", "--noprofile", "--rcfile", f"{home}/rc.bash", "-i"], f"{home}/rc.bash",
                 f"PATH={programs}:$PATH\n. /usr/share/bash-completion/bash_completion\nset +o history\n" + save),
        "zsh": (["zsh", "-i"], f"{home}/.zshrc",
                f"PATH={programs}:$PATH\nbindkey -e\nfpath=({share}/zsh/*(/) $fpath)\nautoload -U compinit\n"
                "compinit -u -D\n" + save),
        "fish": (["fish", "-i"], f"{home}/.config/fish/config.fish",
                 f"set -x PATH (string split : {programs}) $PATH\nfunction args; printf '%s\\0' $argv >answer.new; mv answer.new answer; end\n"
                 "function fish_greeting; end\n"),
    }


class Shell:
    """A shell that runs on a terminal."""

    def __init__(self, command, environment, folder):
        self.folder = folder
        self.shown = b""
        self.process, self.terminal = pty.fork()
        if self.process == 0:
            os.chdir(folder)
            os.execvpe(command[0], command, environment)

    def Arguments(self, keys):
        """What a command gets that is typed with these keys."""
        answer = os.path.join(self.folder, "answer")
        keys = keys.replace("{TAB}", TAB)
        os.write(self.terminal, (keys + LINE_START + "args \r").encode())
        end = time.monotonic() + PATIENCE
        while not os.path.exists(answer):
            if time.monotonic() > end:
                os.write(self.terminal, b"\x03")
                return ["args", f"nothing; on the terminal: {self.shown[-500:]!r}"]
            if select.select([self.terminal], [], [], 0.05)[0]:
                self.shown += os.read(self.terminal, 65536)
        with open(answer, "rb") as file:
            arguments = file.read().decode().split("\0")[:-1]
        os.remove(answer)
        return arguments

    def End(self):
        os.kill(self.process, signal.SIGKILL)
        os.close(self.terminal)
        os.waitpid(self.process, 0)


def Main(cmake, build):
    for needed in ("zsh", "fish", "/usr/share/bash-completion/bash_completion"):
        if not (os.path.exists(needed) or shutil.which(needed)):
            print(f"[  SKIPPED ] {needed} is not there")
            return
    problems = []
    with tempfile.TemporaryDirectory() as stage:
        # By itself, without the programs, which are large.
        log = subprocess.run(["env", f"DESTDIR={stage}", cmake, "--install", f"{build}/packaging/manual", "--prefix", "/usr"],
                             stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, check=False)
        if log.returncode != 0:
            sys.exit(log.stdout)
        share = f"{stage}/usr/share"
        home = f"{stage}/home"
        work = f"{stage}/work"
        os.makedirs(f"{work}/with blanks")
        os.makedirs(f"{home}/.config/fish")
        os.makedirs(f"{share}/fish/generated_completions")  # else fish makes them of all manual pages, beside the test
        for name in ("plain", "a file", ODD_NAME):
            open(os.path.join(work, name), "w", encoding="utf-8").close()
        environment = {"HOME": home, "ZDOTDIR": home, "PATH": os.environ["PATH"], "TERM": "dumb", "LC_ALL": "C.UTF-8",
                       "XDG_DATA_HOME": share, "XDG_DATA_DIRS": f"{share}:/usr/share", "XDG_STATE_HOME": f"{stage}/state"}
        programs = f"{build}/bin"
        # On a busy machine a program may take longer than completion waits for it.
        os.makedirs(f"{stage}/patient")
        with open(f"{stage}/patient/timeout", "w", encoding="utf-8") as file:
            file.write('#!/bin/sh\nshift\nexec "$@"\n')
        os.chmod(f"{stage}/patient/timeout", 0o755)
        subprocess.run([f"{programs}/permora-cli", "grant", "plain", "--account", "Everyone", "--rights", "Delete"],
                       cwd=work, env=environment, check=True, stdout=subprocess.DEVNULL)
        for name, (command, path, text) in Files(home, f"{stage}/patient:{programs}", share).items():
            with open(path, "w", encoding="utf-8") as file:
                file.write(text)
            shell = Shell(command, environment, work)
            for keys, expected in EVERYWHERE + ALSO[name]:
                arguments = [argument.rstrip("/") for argument in shell.Arguments(keys)[1:]]
                if arguments != expected:
                    problems.append(f"{name}: {keys}\n  gives {arguments}\n  not   {expected}")
            shell.Arguments(f'permora-cli show "$(touch hacked)" --account BUIL{TAB}{CLEAR}')
            shell.End()
            if os.path.exists(f"{work}/hacked"):
                problems.append(f"{name}: something that was typed or found was evaluated")
    if problems:
        sys.exit("\n".join(problems))
    print("Passed")


Main(*sys.argv[1:])
