#!/usr/bin/env bash
# Runs one command in a small virtual machine whose kernel has the ALSA
# sequencer, for machines whose own kernel has none (servers, CI, cloud
# kernels).
#
#   bash scripts/alsa-vm.sh [--timeout SECONDS] [--] COMMAND [ARG...]
#
# The VM boots an installed Debian kernel that has the sound modules, with
# snd-seq, snd-seq-dummy and snd-virmidi loaded and configfs mounted; its
# module tree and kmod work inside, so a test may unload and load modules. It sees this machine's files
# read-only, the current directory read-write at the same path, a fresh /tmp
# and /run, devtmpfs on /dev, and the private network of private-network.sh
# (loopback and a link that leads nowhere). COMMAND runs there as root, in the
# current directory, with no standard input; its output (standard error with
# it) comes out as it is written, and its exit status is this script's: 124
# when it timed out (default 1800 s), 3 when the VM could not run it.
# KVM is used when it works here, software emulation otherwise: code runs
# several times slower then, so time nothing inside.
# What it needs is TESSERA_VM_PACKAGES in common.sh; test.sh installs it.
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

# The guest's console carries the kernel's last words as well as the
# command's output; these lines fence the output in.
BEGIN_MARK=TESSERA-VM-OUTPUT-BEGIN
END_MARK=TESSERA-VM-OUTPUT-END
# What the guest has of the run directory (see below).
GUEST_RUN=/run/tessera-vm

# Second stage, PID 1 in the guest once the initramfs has mounted the shared
# file systems: load the modules, bring up the network, run the command and
# power off. Any failure before the command is told on the console and leaves
# no status, which the host reports.
guest_main() {
    set +e
    export PATH=/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin HOME=/tmp LANG=C.UTF-8
    # Kernel messages would land in the middle of the command's output.
    dmesg -n 1
    mkdir -p /dev/pts /dev/shm
    mount -t devpts devpts /dev/pts
    mount -t tmpfs tmpfs /dev/shm
    # Tests plug USB gadgets in as MIDI interfaces; they are made in configfs.
    if modprobe -a snd-seq snd-seq-dummy snd-virmidi veth configfs && mount -t configfs configfs /sys/kernel/config &&
        tessera_private_link; then
        source "$GUEST_RUN/environment"
        cd "$(cat "$GUEST_RUN/workdir")"
        echo "$BEGIN_MARK"
        # Through a pipe, as on the host under CI: programs that colour a
        # terminal's output do not colour this.
        bash "$GUEST_RUN/command" </dev/null 2>&1 | cat
        echo "${PIPESTATUS[0]}" >"$GUEST_RUN/status"
        echo "$END_MARK"
    fi
    sync
    echo o >/proc/sysrq-trigger
    sleep 60
}
if [[ ${1:-} == --guest ]]; then
    guest_main
fi

usage() {
    echo "usage: alsa-vm.sh [--timeout SECONDS] [--] COMMAND [ARG...]" >&2
    exit 2
}
timeout_seconds=1800
while [[ $# -gt 0 ]]; do
    case $1 in
        --timeout) [[ $# -ge 2 ]] || usage; timeout_seconds=$2; shift 2 ;;
        --) shift; break ;;
        -*) usage ;;
        *) break ;;
    esac
done
[[ $# -gt 0 ]] || usage

fail() {
    echo "alsa-vm.sh: $*" >&2
    exit 3
}
for tool in qemu-system-x86_64 busybox cpio modprobe modinfo; do
    command -v "$tool" >/dev/null || fail "$tool is missing; install: ${TESSERA_VM_PACKAGES[*]}"
done
# The initramfs has no C library for it.
! ldd "$(command -v busybox)" >/dev/null 2>&1 || fail "busybox is linked dynamically; install busybox-static"

# The newest installed kernel with the sound modules (cloud kernels have none).
kernel=
for image in $(ls -1 /boot/vmlinuz-* 2>/dev/null | sort -rV); do
    if modinfo -k "${image#/boot/vmlinuz-}" snd-virmidi >/dev/null 2>&1; then
        kernel=$image
        break
    fi
done
[[ -n $kernel ]] || fail "no kernel in /boot has the snd-virmidi module; install linux-image-amd64"
version=${kernel#/boot/vmlinuz-}

run=$(mktemp -d "${TMPDIR:-/tmp}/tessera-vm.XXXXXX")
trap 'rm -rf "$run"' EXIT
# Debian keeps its kernel images readable by root only.
if [[ ! -r $kernel ]]; then
    tessera_as_root cat "$kernel" >"$run/vmlinuz"
    kernel=$run/vmlinuz
fi

# The run directory is the guest's $GUEST_RUN: the second stage (this
# script and common.sh), the command, its environment and working
# directory, and the status the guest leaves.
workdir=$(pwd -P)
cp "${BASH_SOURCE[0]}" "$run/tessera-vm.sh"
cp "$TESSERA_ROOT/scripts/common.sh" "$run/common.sh"
printf '%s' "$workdir" >"$run/workdir"
{
    printf 'export PATH=%q\n' "$PATH"
    for name in $(compgen -e | grep '^TESSERA_' || true); do
        printf 'export %s=%q\n' "$name" "${!name}"
    done
} >"$run/environment"
{
    printf 'exec'
    printf ' %q' "$@"
    printf '\n'
} >"$run/command"

# First stage: a busybox initramfs that loads what the shared file systems
# need (virtio, 9p, each after what it depends on), mounts this machine's root
# read-only with fresh /tmp and /run over it, the run and working directories
# read-write, and hands over to the second stage.
initramfs=$run/initramfs
mkdir -p "$initramfs"/{bin,dev,proc,sys,newroot,modules}
cp "$(command -v busybox)" "$initramfs/bin/busybox"
modprobe -S "$version" --show-depends -a virtio_pci 9pnet_virtio 9p | awk '$1 == "insmod" && !seen[$2]++ { print $2 }' |
    while read -r module; do
        name=$(basename "$module")
        case $name in
            *.ko.xz) xz -dc "$module" >"$initramfs/modules/${name%.xz}"; name=${name%.xz} ;;
            *.ko.zst) zstd -qdc "$module" >"$initramfs/modules/${name%.zst}"; name=${name%.zst} ;;
            *) cp "$module" "$initramfs/modules/$name" ;;
        esac
        echo "$name" >>"$initramfs/modules/order"
    done
cat >"$initramfs/init" <<EOF
#!/bin/busybox sh
/bin/busybox --install -s /bin
stop() { echo "tessera-vm: \$*"; poweroff -f; }
share() {
    tries=0
    until mount -t 9p -o "trans=virtio,version=9p2000.L,msize=262144,\$3" "\$1" "\$2" 2>/dev/null; do
        tries=\$((tries + 1))
        [ \$tries -lt 50 ] || stop "cannot mount the shared directory \$1 on \$2"
        sleep 0.1
    done
}
mount -t proc proc /proc
mount -t sysfs sysfs /sys
mount -t devtmpfs devtmpfs /dev
exec </dev/console >/dev/console 2>&1
for module in \$(cat /modules/order); do
    insmod "/modules/\$module" || stop "cannot load \$module"
done
share host /newroot ro,cache=loose
mount -t tmpfs tmpfs /newroot/tmp
mount -t tmpfs tmpfs /newroot/run
mkdir -p /newroot$GUEST_RUN
share run /newroot$GUEST_RUN rw
work=\$(cat /newroot$GUEST_RUN/workdir)
mkdir -p "/newroot\$work" 2>/dev/null
share work "/newroot\$work" rw
for fs in dev proc sys; do mount --move /\$fs /newroot/\$fs; done
exec switch_root /newroot /bin/bash $GUEST_RUN/tessera-vm.sh --guest
EOF
chmod +x "$initramfs/init"
(cd "$initramfs" && find . | cpio --quiet -o -H newc | gzip -1) >"$run/initramfs.gz"

# KVM is used only when a virtual CPU can really be made here: /dev/kvm can
# be present where nested virtualisation is not supported.
accelerator=(-accel tcg -cpu max)
how="software emulation"
if [[ -r /dev/kvm && -w /dev/kvm ]] && (echo quit | timeout 20 qemu-system-x86_64 -nodefaults -no-user-config \
    -display none -machine pc -accel kvm -cpu host -S -monitor stdio) >/dev/null 2>&1; then
    accelerator=(-accel kvm -cpu host)
    how=KVM
fi
echo "alsa-vm.sh: kernel $version under $how" >&2

# qemu reads commas in its options as separators; doubled they stand for one.
share() {
    echo "local,path=${1//,/,,},mount_tag=$2,security_model=none,multidevs=remap${3:-}"
}
set +e
timeout -k 10 "$timeout_seconds" qemu-system-x86_64 -nodefaults -no-user-config -display none -no-reboot \
    -machine pc "${accelerator[@]}" -m 2048 -smp 1 \
    -kernel "$kernel" -initrd "$run/initramfs.gz" -append "console=ttyS0 quiet loglevel=3 panic=-1" \
    -serial stdio -monitor none \
    -virtfs "$(share / host ,readonly=on)" -virtfs "$(share "$run" run)" -virtfs "$(share "$workdir" work)" \
    </dev/null 2>"$run/qemu.log" | tee "$run/console" |
    sed -u -n -e 's/\r$//' -e "/^$BEGIN_MARK\$/,/^$END_MARK\$/{ /^TESSERA-VM-OUTPUT-/d; p; }"
qemu_status=${PIPESTATUS[0]}
set -e
if [[ $qemu_status == 124 ]]; then
    echo "alsa-vm.sh: the VM was stopped after $timeout_seconds s" >&2
    exit 124
fi
if [[ ! -s $run/status ]]; then
    echo "alsa-vm.sh: the VM ended without running the command to its end (qemu status $qemu_status):" >&2
    tr -d '\r' <"$run/console" | tail -n 30 >&2
    cat "$run/qemu.log" >&2
    exit 3
fi
exit "$(cat "$run/status")"
