#!/usr/bin/env bash
# Runs a script as root under the kernel of Debian's own package, which can mount what servers share (cifs), whatever
# kernel this machine has.
#
#   kernel_machine.sh FOLDER SCRIPT [ARGUMENT...]    its output, its exit code
#
# An emulated computer, for which this one needs no support by its processor, starts that kernel. Its root is this
# machine's, read only, below a layer in memory: all that is installed and built here is there, and nothing that the script
# does stays. It has no network but its own loopback. FOLDER keeps the kernel, unpacked once.
# It is ended after KERNEL_MACHINE_SECONDS, 1200 by default.
set -euo pipefail
[ $# -ge 2 ] || { echo "Usage: kernel_machine.sh FOLDER SCRIPT [ARGUMENT...]" >&2; exit 2; }
mkdir -p "$1"
folder=$(readlink -f "$1")
script=$(readlink -f "$2")
[[ $folder != /run/* && $script != /run/* ]] || { echo "The machine has a /run of its own." >&2; exit 2; }
shift 2
secondsAtMost=${KERNEL_MACHINE_SECONDS:-1200}

# Modules, as folders or files below kernel/: the disk that is this machine's root, the layer, SMB, what it encrypts with,
# and networks with delays.
modules=(fs/9p net/9p fs/fscache fs/netfs fs/overlayfs fs/smb drivers/virtio net/dns_resolver crypto arch/x86/crypto lib
    'net/sched/sch_netem.ko*')

# The package of the newest kernel of this release, as the meta package names it.
KernelPackage() {
    local meta=linux-image-amd64
    apt-cache depends "$meta" 2>/dev/null | sed -n 's/.*Depends: \(linux-image-[^ ]*\)$/\1/p' | head -n 1
}

# Download FOLDER PACKAGE
Download() { (cd "$1" && apt-get download --quiet "$2" >download.log 2>&1); }

UnpackKernel() {
    local package work
    package=$(KernelPackage)
    if [ -z "$package" ]; then
        apt-get update --quiet >/dev/null
        package=$(KernelPackage)
    fi
    [ -n "$package" ] || { echo "No package has a kernel." >&2; return 1; }
    work=$(mktemp -d "$folder/unpacking.XXXXXX")
    chmod 755 "$work" # apt fetches as a user of its own
    Download "$work" "$package" || {
        # This release may have a newer one by now.
        apt-get update --quiet >/dev/null
        Download "$work" "$(KernelPackage)"
    } || { cat "$work/download.log" >&2; return 1; }
    mkdir "$work/kernel"
    dpkg-deb --fsys-tarfile "$work"/*.deb | tar --extract --directory "$work/kernel" --wildcards './boot/vmlinuz-*' \
        './lib/modules/*/modules.*' "${modules[@]/#/./lib/modules/*/kernel/}"
    depmod --basedir "$work/kernel" "$(ls "$work/kernel/lib/modules")"
    echo "${modules[*]}" >"$work/kernel/modules"
    rm -rf "$folder/kernel"
    mv "$work/kernel" "$folder/kernel" # whole or not at all
    rm -rf "$work"
}
exec 9>"$folder/lock"
flock 9
[ "$(cat "$folder/kernel/modules" 2>/dev/null)" = "${modules[*]}" ] || UnpackKernel
version=$(ls "$folder/kernel/lib/modules")

# The first files that the kernel sees: a shell, the modules, and the way to the root.
start=$(mktemp -d "$folder/start.XXXXXX")
trap 'rm -rf "$start"' EXIT
mkdir -p "$start"/files/{bin,sbin,proc,sys,dev,below,above,root,lib}
cp "$(command -v busybox)" "$start/files/bin/busybox"
ln -s ../bin/busybox "$start/files/sbin/modprobe"
cp -r "$folder/kernel/lib/modules" "$start/files/lib/modules"
{
    printf '#!/bin/bash\nexport PATH=%q HOME=/root LANG=C.UTF-8\n' "$PATH"
    printf 'exec </dev/null\nexec bash %q' "$script"
    printf ' %q' "$@"
    printf '\n'
} >"$start/files/job"
cat >"$start/files/init" <<'INIT'
#!/bin/busybox sh
export PATH=/bin:/sbin
/bin/busybox --install -s /bin
mount -t proc none /proc
mount -t sysfs none /sys
mount -t devtmpfs none /dev
for module in virtio_pci 9pnet_virtio 9p overlay cifs; do modprobe "$module"; done
mount -t 9p -o trans=virtio,version=9p2000.L,ro,cache=loose,msize=512000 host /below
mount -t tmpfs none /above
mkdir /above/changes /above/work
mount -t overlay -o lowerdir=/below,upperdir=/above/changes,workdir=/above/work none /root
ip link set lo up
ip addr add 127.0.0.1/8 dev lo 2>/dev/null
for place in proc sys dev; do mount --move "/$place" "/root/$place"; done
mkdir -p /root/dev/shm /root/dev/pts
mount -t devpts none /root/dev/pts
mount -t tmpfs none /root/dev/shm
mount -t tmpfs none /root/run
cp /job /root/run/job
chroot /root /bin/bash /run/job
echo "the script's exit code: $?"
echo o >/root/proc/sysrq-trigger
sleep 60
INIT
chmod +x "$start/files/init"
(cd "$start/files" && find . | cpio --create --format=newc --quiet | gzip -1) >"$start/first.gz"
flock --unlock 9

timeout "$secondsAtMost" qemu-system-x86_64 -accel tcg -cpu max -m 2048 -smp 1 -no-reboot -nodefaults -display none -serial stdio \
    -kernel "$folder/kernel/boot/vmlinuz-$version" -initrd "$start/first.gz" -append "console=ttyS0 quiet panic=-1 no_timer_check" \
    -virtfs local,path=/,mount_tag=host,security_model=none,readonly=on,multidevs=remap </dev/null 2>&1 |
    sed --unbuffered 's/\r//g' | tee "$start/output" | sed --unbuffered "/^the script's exit code: /d"
code=$(sed -n "s/^the script's exit code: //p" "$start/output" | tail -n 1)
exit "${code:-1}"
