# Installs the Debian packages that the scripts of this project need. Sourced, not run.
# shellcheck shell=bash disable=SC2034

# The toolkit's plugin for icons that are drawings: Debian 12 has it in the package of its library.
# The same release has no package for its clang's libraries whatever the version.
case $(. /etc/os-release && echo "$ID ${VERSION_ID-}") in
"debian 12") drawingsPackage=libqt6svg6 sanitizersPackage=libclang-rt-14-dev ;;
*) drawingsPackage=qt6-svg-plugins sanitizersPackage=libclang-rt-dev ;;
esac

# To configure, build and test; the presets configure all of it at once.
buildPackages=(cmake ninja-build g++ mold gcc-mingw-w64-x86-64-posix qt6-base-dev libxcb1-dev libsystemd-dev
    libcli11-dev nlohmann-json3-dev libtomlplusplus-dev libsqlite3-dev libgtest-dev libgmock-dev python3-jsonschema libfuse3-dev fp-utils
    libglib2.0-bin "$drawingsPackage")
# Real volumes: mkntfs, the driver, and the judge ntfssecaudit; volumes of Linux's own.
volumePackages=(ntfs-3g fuse3 attr e2fsprogs)
# A real server, its module that keeps access lists, and its clients.
serverPackages=(samba samba-vfs-modules smbclient)
# A domain: what its controller and its members need beside the server.
domainPackages=(winbind samba-ad-provision samba-dsdb-modules iproute2)
# A kernel that mounts what servers share: the machine that runs it, and what its start consists of.
kernelPackages=(qemu-system-x86 busybox-static kmod cpio cifs-utils)
# A screen without a display, a window manager, letters, and the hands and eyes of the test that uses them; a bus, and what
# a screen reader reads there; a compositor without a display, and the toolkit's half for it; the judges of what a desktop is told.
screenPackages=(xvfb openbox xdotool x11-utils imagemagick fonts-dejavu-core dbus-daemon at-spi2-core
    gir1.2-atspi-2.0 python3-gi weston qt6-wayland desktop-file-utils appstream shared-mime-info)
# The shells in which completion is tested, and those who judge manual pages.
shellPackages=(bash-completion zsh fish man-db mandoc python3)
# The browser in which the page of a report is tested.
browserPackages=(chromium)

# To build for Windows and to run that: the compiler, what makes SQLite from its source, the source of the test framework,
# Wine without its 32-bit half, and a screen for its windows.
windowsPackages=(g++-mingw-w64-x86-64-posix dpkg-dev tcl googletest wine64 xvfb zip)

# The other compiler, and what is linked to programs that it checks while they run.
clangPackages=(clang "$sanitizersPackage")

# To make Debian's packages, to check them, and to make empty systems for their test (and for check_root.sh).
packagingPackages=(build-essential debhelper dpkg-dev lintian mmdebstrap)

# MissingPackages PACKAGE...: those that are not installed, one a line. A look into dpkg's own tables, no network.
MissingPackages() {
    local installed
    # It answers 1 when it has never heard of one of them, which is what is asked for here.
    installed=$({ dpkg-query --show --showformat '${db:Status-Abbrev} ${Package}\n' "$@" 2>/dev/null || true; } |
        sed -n 's/^ii *//p')
    printf '%s\n' "$@" | grep --line-regexp --fixed-strings --invert-match --file=<(printf '%s\n' "$installed") ||
        true
}

# AsRoot COMMAND...: the command with the rights to install software.
AsRoot() {
    if [ "$(id -u)" = 0 ]; then "$@"; else sudo "$@"; fi
}

# InstallPackages PACKAGE...: installs them without starting any service that they bring: a test run must not open
# a file server to the network. A Samba that comes this way stays switched off at the next start as well.
InstallPackages() {
    local guard=/usr/sbin/policy-rc.d placedGuard=no status=0
    if [ ! -e "$guard" ]; then
        placedGuard=yes
        printf '#!/bin/sh\nexit 101\n' | AsRoot tee "$guard" >/dev/null
        AsRoot chmod 755 "$guard"
    fi
    AsRoot env DEBIAN_FRONTEND=noninteractive apt-get install --yes --quiet --no-install-recommends "$@" </dev/null ||
        status=$?
    [ "$placedGuard" = no ] || AsRoot rm -f "$guard"
    if [ "$status" = 0 ] && [ -d /run/systemd/system ]; then
        [[ " $* " != *" samba "* ]] || AsRoot systemctl --quiet disable smbd nmbd samba-ad-dc || true
        [[ " $* " != *" winbind "* ]] || AsRoot systemctl --quiet disable winbind || true
    fi
    return "$status"
}

# EnsurePackages PACKAGE...: returns at once when all are there; installs the missing ones as root or through sudo,
# and says what is missing where neither is possible.
EnsurePackages() {
    local answer missing
    answer=$(MissingPackages "$@") || return 1
    [ -n "$answer" ] || return 0
    mapfile -t missing <<<"$answer"
    if [ "$(id -u)" != 0 ] && ! command -v sudo >/dev/null; then
        echo "These packages are missing; install them as root with:" >&2
        echo "    apt-get install ${missing[*]}" >&2
        return 1
    fi
    echo "Installing ${missing[*]}"
    InstallPackages "${missing[@]}" || { AsRoot apt-get update --quiet && InstallPackages "${missing[@]}"; }
}
