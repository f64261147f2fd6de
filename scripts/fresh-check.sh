#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Runs the README's two commands (its first two lines) as a newcomer would:
# in a minimal Debian bookworm root holding only git, ca-certificates and the
# tracked files of this checkout, entered with chroot and a clean
# environment.  Fails when either command fails.
#
# The minimal root is built once with debootstrap and kept as a tarball in
# $VEXO_FRESH_CACHE (default /var/cache/vexo-fresh); every run unpacks a new
# copy, so each run starts from the same untouched system.  Packages the
# host already downloaded are offered to the root's apt cache as hard links
# (apt checks each against the archive's hash and downloads what differs).
# Needs root; without it the check is skipped with a message.
set -euo pipefail
cd "$(dirname "$0")/.."

if [ "$(id -u)" -ne 0 ]; then
    echo "fresh-check: SKIPPED: building and entering a chroot needs root"
    exit 0
fi

suite=bookworm
mirror=${VEXO_FRESH_MIRROR:-http://deb.debian.org/debian}
cache=${VEXO_FRESH_CACHE:-/var/cache/vexo-fresh}
tarball="$cache/$suite-minbase-git.tar"
start=$(date +%s)
say() { echo "fresh-check [$(( $(date +%s) - start ))s]: $*"; }

if ! command -v debootstrap >/dev/null; then
    say "installing debootstrap"
    apt-get update -qq
    DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends debootstrap >/dev/null
fi

root=$(mktemp -d /var/tmp/vexo-fresh.XXXXXX)
mounted=()
cleanup() {
    local status=$? m i
    for ((i = ${#mounted[@]} - 1; i >= 0; i--)); do
        m=${mounted[i]}
        umount -R "$m" 2>/dev/null || umount -R -l "$m" 2>/dev/null || true
    done
    # Remove the root only when nothing is mounted below it any more.
    if ! grep -q " $root/" /proc/mounts; then
        rm -rf --one-file-system "$root"
    else
        echo "fresh-check: $root still has mounts; left in place" >&2
    fi
    exit "$status"
}
trap cleanup EXIT
trap 'exit 130' INT TERM

if [ ! -s "$tarball" ]; then
    say "building the minimal $suite root (cached in $tarball)"
    mkdir -p "$cache"
    debootstrap --variant=minbase --include=git,ca-certificates "$suite" "$root" "$mirror" \
        >"$root.debootstrap.log" 2>&1 || { tail -n 40 "$root.debootstrap.log"; exit 1; }
    rm -f "$root.debootstrap.log"
    tar -C "$root" --numeric-owner -cf "$tarball.part" . && mv "$tarball.part" "$tarball"
else
    say "unpacking the cached minimal root"
    tar -C "$root" --numeric-owner -xpf "$tarball"
fi

# A system's root folder is open to every user (apt downloads as _apt).
chmod 0755 "$root"

# The system a newcomer has: the release with its updates and security fixes,
# a name server, and no package left in apt's cache by the build above.
cat >"$root/etc/apt/sources.list" <<SOURCES
deb $mirror $suite main
deb $mirror $suite-updates main
deb http://deb.debian.org/debian-security $suite-security main
SOURCES
cp -L /etc/resolv.conf "$root/etc/resolv.conf"
# dpkg without an fsync per file, as Debian's container images ship it: the
# root is thrown away after the run, and unpacking is most of setup's time.
echo force-unsafe-io >"$root/etc/dpkg/dpkg.cfg.d/unsafe-io"
if [ -d /var/cache/apt/archives ]; then
    find /var/cache/apt/archives -maxdepth 1 -name '*.deb' -exec ln -f -t "$root/var/cache/apt/archives" {} + 2>/dev/null || true
fi

say "copying the tracked files"
mkdir -p "$root/root/libvexo"
git ls-files -z | tar --null -T - -cf - | tar -C "$root/root/libvexo" -xf -

for fs in proc sys dev; do
    case $fs in
    proc) mount -t proc proc "$root/proc" ;;
    sys) mount -t sysfs sysfs "$root/sys" ;;
    dev) mount --rbind /dev "$root/dev" && mount --make-rslave "$root/dev" ;;
    esac
    mounted+=("$root/$fs")
done

mapfile -t commands < <(sed -n '1,2p' README.md)
if [ "${#commands[@]}" -ne 2 ] || [ -z "${commands[0]}" ] || [ -z "${commands[1]}" ]; then
    echo "fresh-check: README.md must open with the two commands" >&2
    exit 1
fi
status=0
for command in "${commands[@]}"; do
    say "running \`$command\`"
    began=$(date +%s)
    if chroot "$root" /usr/bin/env -i HOME=/root TERM=dumb \
        PATH=/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin \
        /bin/bash -c "cd /root/libvexo && $command" </dev/null; then
        say "\`$command\` passed in $(( $(date +%s) - began ))s"
    else
        say "FAILED: \`$command\` (after $(( $(date +%s) - began ))s)"
        status=1
        break
    fi
done
[ "$status" -eq 0 ] && say "both README commands passed in a fresh $suite root"
exit "$status"
