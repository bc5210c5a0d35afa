"""Fills the database of a new domain controller with the accounts that tests use.

Arguments: the password of all users, and how many users to add besides those named here. Relative ids are given in the
order of creation and begin at 1103.
"""
import sys

import ldb
from samba import dsdb
from samba.auth import system_session
from samba.param import LoadParm
from samba.samdb import SamDB

GLOBAL = dsdb.GTYPE_SECURITY_GLOBAL_GROUP
LOCAL = dsdb.GTYPE_SECURITY_DOMAIN_LOCAL_GROUP
UNIVERSAL = dsdb.GTYPE_SECURITY_UNIVERSAL_GROUP

USERS = {"anna": ("Anna", "Berg"), "bert": ("Bert", "Vos"), "carla": ("Carla", "Ruiz"), "emil": ("Emil", "Gone")}
GROUPS = {
    "Platform": (GLOBAL, ["bert"]),
    "Engineering": (GLOBAL, ["anna", "Platform"]),
    "Payroll": (LOCAL, ["Engineering"]),
    "Auditors": (UNIVERSAL, ["Platform"]),
    "Leavers": (GLOBAL, ["dora"]),
}
# Relative ids are shown in the tests.
GROUP_ORDER = ["Engineering", "Platform", "Payroll", "Auditors", "Leavers"]


def replace(database, account, attribute, value):
    message = ldb.Message(database.search(expression=f"(sAMAccountName={account})", attrs=[])[0].dn)
    message[attribute] = ldb.MessageElement(value, ldb.FLAG_MOD_REPLACE, attribute)
    database.modify(message)


def add_accounts(database, password):
    for name, (given, surname) in USERS.items():
        database.newuser(name, password, givenname=given, surname=surname)
    for name in GROUP_ORDER:
        database.newgroup(name, grouptype=GROUPS[name][0])
    database.newcomputer("WS1")
    database.newuser("dora", password, givenname="Dora", surname="Lind")
    for name, (_, members) in GROUPS.items():
        database.add_remove_group_members(name, members, add_members_operation=True)
    # Her primary group is another than the one of everybody else, of which she is no member.
    group = database.search(expression="(sAMAccountName=Leavers)", attrs=["primaryGroupToken"])[0]
    replace(database, "dora", "primaryGroupID", group["primaryGroupToken"][0])
    database.add_remove_group_members("Domain Users", ["dora"], add_members_operation=False)


def add_crowd(database, count):
    """Users without a password, as records, since making real ones takes minutes."""
    parent = f"CN=Users,{database.domain_dn()}"
    for number in range(1, count + 1):
        name = f"person{number:05}"
        database.add({"dn": f"CN={name},{parent}", "objectClass": "user", "sAMAccountName": name})


def main():
    password, count = sys.argv[1], int(sys.argv[2])
    parameters = LoadParm()
    parameters.load_default()
    database = SamDB(session_info=system_session(), lp=parameters)
    database.transaction_start()
    add_accounts(database, password)
    add_crowd(database, count)
    database.transaction_commit()
    database.deleteuser("emil")


main()
