"""Prints which rights a file server grants a user on files: a mask in hexadecimal for each name on standard input.

Each right is asked for by an open of the file of its own, so what is printed is what the server does.
Arguments: the user as DOMAIN\\name%password, and the share. The server is this machine's.
"""
import sys

from samba import NTSTATUSError, credentials
from samba.param import LoadParm
from samba.samba3 import libsmb_samba_internal as libsmb
from samba.samba3 import param

RIGHTS = [1 << bit for bit in (*range(9), *range(16, 21))]
SHARE_ALL = 7
NT_STATUS_ACCESS_DENIED = 0xC0000022


def connect(user, share):
    settings = LoadParm()
    settings.load_default()
    account = credentials.Credentials()
    account.guess(settings)
    account.parse_string(user)
    account.set_kerberos_state(credentials.DONT_USE_KERBEROS)
    context = param.get_context()
    context.load(settings.configfile)
    return libsmb.Conn("127.0.0.1", share, context, creds=account)


def may_open(connection, name, right):
    try:
        connection.close(connection.create(name, DesiredAccess=right, ShareAccess=SHARE_ALL))
    except NTSTATUSError as error:
        if error.args[0] & 0xFFFFFFFF != NT_STATUS_ACCESS_DENIED:
            raise
        return False
    return True


def main():
    connection = connect(sys.argv[1], sys.argv[2])
    for line in sys.stdin:
        name = line.rstrip("\n").replace("/", "\\")
        print(hex(sum(right for right in RIGHTS if may_open(connection, name, right))))


main()
