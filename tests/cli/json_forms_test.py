#!/usr/bin/env python3
"""What scripts rely on, of every command: the form of its JSON, its exit code with --check, and that a second run
changes nothing and leaves nothing in the history.
  json_forms_test.py PERMORA-CLI SCHEMA"""
import json
import os
import pathlib
import re
import subprocess
import sys
import tempfile

import jsonschema

program = sys.argv[1]
schema = json.loads(pathlib.Path(sys.argv[2]).read_text())
jsonschema.Draft202012Validator.check_schema(schema)
# Others are to ignore members that they do not know; here none may be missing in the schema.
forms = schema["$defs"]
for closed in (forms["change"], forms["changeResult"], forms["messages"]["items"]):
    closed["additionalProperties"] = False
validator = jsonschema.Draft202012Validator(schema)
seen = set()


def run(expected, *arguments):
    """The document that a command prints."""
    done = subprocess.run([program, *arguments, "--json"], capture_output=True, text=True, timeout=300)
    where = f"{arguments}: exit code {done.returncode}\n{done.stdout}{done.stderr}"
    assert done.returncode == expected, where
    if expected == 2:
        assert done.stdout == "" and done.stderr != "", where
        return None
    document = json.loads(done.stdout)
    errors = list(validator.iter_errors(document))
    assert not errors, f"{where}\n{errors[0].message}\n" + "\n".join(c.message for c in errors[0].context)
    seen.add(document.get("command", "report"))
    return document


def same(*arguments):
    """A change of an object for which nothing is stored yet, or something else than the system has."""
    checked = json.loads(subprocess.run([program, *arguments, "--check", "--json"], capture_output=True,
                                        text=True, check=False).stdout)
    made = run(0, *arguments)
    assert [result["result"] for result in checked["results"]] == [
        result["result"] for result in made["results"]], (checked, made)


def changes():
    return len(run(0, "history")["results"])


def lists():
    return [subprocess.run([program, "show", "--sddl", place], capture_output=True, text=True).stdout
            for place in (top, folder, file)]


def change(arguments, check=None):
    """A change, with its checks before and after, and once more."""
    check = check or [*arguments, "--check"]
    recorded, before = changes(), lists()
    checked = run(1, *check)
    assert checked["summary"]["changed"] > 0 and not checked["written"], checked
    assert lists() == before and changes() == recorded, check
    made = run(0, *arguments)
    assert made["summary"]["changed"] > 0 and made["summary"]["failed"] == 0, made
    once, after = changes(), lists()
    assert made["change"] is None or once == recorded + 1, made
    assert run(0, *check)["summary"]["changed"] == 0
    again = run(0, *arguments)
    assert again["summary"]["changed"] == 0 and again["change"] is None, again
    assert all(result["result"] == "already" for result in again["results"]), again
    assert changes() == once and lists() == after, arguments


with tempfile.TemporaryDirectory() as place:
    os.environ.update(XDG_STATE_HOME=f"{place}/state", XDG_CONFIG_HOME=f"{place}/config")
    os.environ.pop("XDG_DATA_HOME", None)
    top, folder, file = f"{place}/top", f"{place}/top/folder", f"{place}/top/folder/file"
    pathlib.Path(folder).mkdir(parents=True)
    pathlib.Path(file).write_text("text\n")
    pathlib.Path(f"{place}/ZELHELP.chm").touch()

    change(["grant", top, "--account", "Everyone", "--rights", "Full control"])
    change(["grant", file, "--account", "Users", "--rights", "0x1200a9"])
    run(0, "save", top, "--output", f"{place}/saved")
    report = run(0, "report", top)
    pathlib.Path(f"{place}/older.json").write_text(json.dumps(report))
    change(["deny", folder, "--account", "Guests", "--rights", "Delete", "--scope", "Files only"])
    change(["inherit", folder, "--copy"])
    change(["assign", file, "--account", "Guests", "--rights", "0x1"])
    change(["owner", file, "--set", "Administrators"])
    change(["owner", top, "--set", "Users", "--tree"])
    change(["replace", top, "--account", "Guests", "--by", "S-1-5-32-547", "--keep-owners"])
    change(["revoke", file, "--account", "S-1-5-32-547"])
    change(["revoke", top, "--account", "S-1-5-32-547", "--tree"])
    change(["clone", file, "--from", folder])
    pathlib.Path(f"{place}/newer.json").write_text(json.dumps(run(0, "report", top)))
    assert run(1, "report", "--compare", f"{place}/older.json", f"{place}/newer.json")["results"]
    assert run(1, "compare", f"{place}/saved", top)["summary"]["different"] > 0
    change(["restore", f"{place}/saved", "--yes"])
    change(["reset", top, "--yes"])
    change(["setup", place])
    change(["history", "--keep-days", "30"])

    policy = pathlib.Path(f"{place}/policy.toml")
    policy.write_text(f'version = 1\n[[rule]]\npath = "{folder}"\nprotected = true\n'
                      'entries = [{allow = "Administrators", rights = "Full control"}]\n')
    change(["policy", "apply", str(policy)], ["policy", "check", str(policy)])
    run(0, "history", str(changes()))
    assert run(1, "undo", "--check")["results"][0]["objects"]["changed"] > 0
    undone = run(0, "undo", "--yes")
    assert run(0, "history")["results"][0]["number"] == undone["change"], undone

    # The last rule about an object counts, and what is missing is no difference but a failure.
    other = f"{top}/other"
    pathlib.Path(other).write_text("text\n")
    rules = (f'version = 1\n[[rule]]\npath = "{top}"\nbelow = "**"\nonly = "files"\n'
             'entries = [{allow = "Users", rights = "0x1"}]\n'
             f'[[rule]]\npath = "{file}"\nincludes = [{{deny = "Guests", rights = "Delete"}}]\n'
             f'[[rule]]\npath = "{top}/missing"\nowner = "Users"\n')
    policy.write_text(rules)
    before = lists()
    assert run(3, "policy", "check", str(policy))["summary"]["failed"] == 1
    policy.write_text(rules + "optional = true\n")
    change(["policy", "apply", str(policy)], ["policy", "check", str(policy)])
    own = [[entry["sid"] for entry in result["entries"] if not entry["inherited"]]
           for result in run(0, "show", file, other)["results"]]
    assert "S-1-5-32-546" in own[0] and own[1] == ["S-1-5-32-545"], own
    run(0, "undo", "--yes")
    assert lists() == before
    for wrong in (rules + "wrong = 1\n", rules.replace("Users", "nobody called so")):
        policy.write_text(wrong)
        run(2, "policy", "apply", str(policy))
    policy.write_text(rules)
    policy.chmod(0o666)
    if os.geteuid() == 0:
        run(2, "policy", "apply", str(policy))
    assert lists() == before

    run(0, "show", top, file)
    assert not run(0, "owner", top)["written"]
    run(0, "effective", file, "--account", "Everyone", "--explain")
    assert run(0, "find", top, "--account", "Everyone")["results"]
    assert run(1, "verify", top)["results"]  # what was made without a list
    change(["verify", top, "--repair"])
    run(0, "verify", top)
    run(0, "accounts", "--search", "Administrators")
    run(0, "shares")
    run(1, "shares", "show", "there is no such share")

    for number, arguments in enumerate([["owner", "--set", "its own"], ["owner", "--set", "Guests"],
                                        ["inherit", "--copy"], ["revoke", "--account", "Guests"],
                                        ["grant", "--account", "Everyone", "--rights", "Full control"]]):
        fresh = f"{place}/fresh{number}"
        pathlib.Path(fresh).touch()
        if arguments[-1] == "its own":
            arguments[-1] = run(0, "owner", fresh)["results"][0]["ownerSid"]
        same(arguments[0], fresh, *arguments[1:])
        if os.geteuid() == 0 and arguments[0] == "owner":
            os.chown(fresh, 12345, -1)
            same(arguments[0], fresh, *arguments[1:])

    # What cannot be done is kept apart from what would be done.
    missing = run(3, "grant", file, f"{place}/missing", "--account", "Guests", "--rights", "Delete", "--check")
    assert [result["result"] for result in missing["results"]] == ["changed", "failed"], missing
    assert missing["results"][1]["messages"][0]["code"] == 2, missing
    run(2, "grant", file, "--account", "nobody called so", "--rights", "Delete", "--check")
    for arguments, expected in (["--repair", "--check"], 3), ([], 1):
        missing = run(expected, "verify", f"{place}/missing", *arguments)
        messages = missing["repairs"][0]["messages"] if arguments else missing["messages"]
        assert missing["summary"]["failed"] == 1 and messages[0]["code"] == 2, missing
    closing = run(1, "deny", file, "--account", "Everyone", "--rights", "Full control", "--check")
    assert any("you would be locked out" in said["text"] for said in closing["results"][0]["messages"]), closing
    with open("/dev/full", "w", encoding="ascii") as full:
        done = subprocess.run([program, "owner", file, "--set", "Guests", "--check", "--json"], stdout=full, stderr=subprocess.PIPE,
                              text=True, check=False)
        assert done.returncode == 3 and "standard output" in done.stderr, done
    assert run(1, "shred", file, "--check")["results"][0]["result"] == "changed"
    assert pathlib.Path(file).exists()
    run(0, "shred", file, "--yes", "--force")
    run(1, "history", "--prune", "2999-01-01", "--check")
    run(0, "history", "--prune", "2999-01-01")
    assert run(0, "history")["results"] == []

    # What cannot be read is told of in a whole document.
    pathlib.Path(f"{place}/state/permora/history.db").write_text("no history\n")
    for arguments in ["history"], ["history", "1"], ["undo"], ["history", "--prune", "2999-01-01"]:
        assert run(1, *arguments)["messages" if arguments[-1] != "2999-01-01" else "results"], arguments
    run(1, "verify", top, "--repair")
    next(pathlib.Path(f"{place}/config").rglob("registry.reg")).write_text("no settings\n")
    assert run(1, "history", "--keep-days", "90")["results"][0]["messages"]

shown = subprocess.run([program, "--help"], capture_output=True, text=True, check=True).stdout
commands = set(re.findall(r"^  ([a-z]+) ", shown.split("Subcommands:")[1].split("Examples:")[0], re.MULTILINE))
assert commands and commands == {name.split()[0] for name in seen}, commands ^ {name.split()[0] for name in seen}
