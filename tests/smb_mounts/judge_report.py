"""Compares a report about what a server shares with what the server tells one of its own clients: judge_report.py REPORT MOUNT.

REPORT is what `report --json` printed of a folder of MOUNT. Prints what differs in owners and entries, and ends with 1 then.
"""
import json
import subprocess
import sys

SYNCHRONIZE, INHERITED = 0x100000, 0x10


def of_server(path):
    """The owner, and of each entry its kind, account, mask, and whether it is inherited. Accounts are SIDs."""
    command = ["smbcacls", "//127.0.0.1/data", path, "-U", "root%secret", "--numeric"]
    answer = subprocess.run(command, capture_output=True, text=True, check=True)
    owner, entries = None, []
    for line in answer.stdout.splitlines():
        what, _, rest = line.partition(":")
        if what == "OWNER":
            owner = rest
        elif what == "ACL":
            sid, numbers = rest.rsplit(":", 1)
            kind, flags, mask = (int(number, 0) for number in numbers.split("/"))
            entries.append((["Allow", "Deny"][kind], sid, mask, bool(flags & INHERITED)))
    return owner, entries


def of_report(security):
    return security["ownerSid"], [(each["type"], each["sid"], int(each["mask"], 0) | SYNCHRONIZE * each["synchronize"],
                                   each["inherited"]) for each in security["entries"]]


def main():
    with open(sys.argv[1], encoding="utf-8") as text:
        report = json.load(text)
    differences = 0
    for each in report["objects"]:
        told = of_report(report["lists"][each["list"]])
        judged = of_server(each["path"].removeprefix(sys.argv[2] + "/"))
        if told != judged:
            differences += 1
            print(f"{each['path']}: {told}, and by the server {judged}")
    print(f"{len(report['objects'])} of {report['summary']['objects']} objects are in the report")
    sys.exit(1 if differences or len(report["objects"]) < 2 else 0)


main()
