#!/usr/bin/env bash
# Installs the Debian packages in a root of their own, with nothing of this machine
# in it: the agent answers there as its service starts it, the consumer project is
# built there, and after a purge nothing is left.
# Usage: clean_root.sh PACKAGES WORK
# Ends with 77, and says why, where such a root cannot be made.
set -euo pipefail
source=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
packages=$(cd "$1" && pwd)
mkdir -p "$2"
work=$(cd "$2" && pwd)
mirror=http://deb.debian.org/debian
suite=$(. /etc/os-release && echo "$VERSION_CODENAME")
base=$work/$suite.tar
tools=snmp,g++,cmake,make,pkgconf,systemd-standalone-sysusers
root=$work/root
install='-y -qq --no-install-recommends /tmp/packages/*.deb'
export LC_ALL=C DEBIAN_FRONTEND=noninteractive

say() { printf 'clean root: %s\n' "$*"; }
skip()
{
    say "Skipped: $*"
    exit 77
}
die()
{
    say "FAILED: $*"
    exit 1
}

# inside COMMAND...: in the root, with a network, processes and mounts of its own,
# which are gone when the command ends.
inside()
{
    unshare --mount --pid --net --fork --kill-child bash -c '
        set -e
        ip link set lo up
        mount -t proc proc "$0/proc"
        exec chroot "$0" "$@"' "$root" "$@"
}

# from_mirror LOG COMMAND...: what needs the network, tried three times. A mirror that does not
# answer, answers half or is behind a proxy that says no is nobody's fault here and skips the
# test; packages that do not exist or do not go together are ours, and fail.
from_mirror()
{
    local log=$1 try why
    local ours='Unable to locate package|no installation candidate|unmet dependencies|held broken packages'
    shift
    for try in 1 2 3; do
        ! timeout 900 "$@" >"$log" 2>&1 </dev/null || return 0
        tail -n 20 "$log"
        ! grep -qE "$ours" "$log" || die "$*"
        [ "$try" = 3 ] || sleep 10
    done
    why=$(grep -E '^(E|Err|W)[: ]' "$log" | tail -n 1) || why="no answer in time"
    skip "the mirror $mirror fails: $why"
}

# apt and dpkg, without a network: what they need was downloaded before, so that no mirror can
# make an installation fail. Nothing is started by installing.
install_inside()
{
    inside "$@" </dev/null >>"$work/log" 2>&1 || {
        tail -n 30 "$work/log"
        die "$*"
    }
}
download_inside() { from_mirror "$work/download.log" chroot "$root" "$@"; }

# What an installation may leave: package lists and records, logs, accounts, caches.
files()
{
    (cd "$root" && find . -xdev \( -path ./proc -o -path ./tmp -o -path ./var/lib/apt -o -path ./var/lib/dpkg \
        -o -path ./var/cache -o -path ./var/log -o -path ./root \) -prune -o -print) |
        grep -vxE '\./etc/(passwd|shadow|group|gshadow)-?|\./etc/\.pwd\.lock|\./etc/ld\.so\.cache' | sort
}

make_base()
{
    [ ! "$base" -nt "${BASH_SOURCE[0]}" ] || return 0
    say "making $base"
    curl -sfI --max-time 20 -o "$work/reached" "$mirror/dists/$suite/Release" ||
        skip "the mirror $mirror cannot be reached"
    from_mirror "$work/base.log" mmdebstrap --mode=root --format=tar --variant=minbase \
        --include="$tools" "$suite" "$base.new" "$mirror"
    mv "$base.new" "$base"
}

fresh_root()
{
    rm -rf "$root"
    mkdir "$root"
    tar -xf "$base" -C "$root"
    cp /etc/resolv.conf "$root/etc/resolv.conf"
    printf '#!/bin/sh\nexit 101\n' >"$root/usr/sbin/policy-rc.d"
    chmod 755 "$root/usr/sbin/policy-rc.d"
    mkdir -p "$root/tmp/packages"
    cp "$packages"/*.deb "$root/tmp/packages"
    cp -r "$source/tests/install/consumer" "$source/tests/install/consumer.sh" "$root/tmp"
    : >"$work/log"
}

# The line by which systemd starts it, by its user, in the directories that systemd makes.
agent_answers()
{
    local command
    command=$(sed -n 's/^ExecStart=//p' "$root/usr/lib/systemd/system/vkagentd.service" |
        sed -e 's|%S|/var/lib|' -e 's|%E|/etc|')
    chroot "$root" install -d -o vkagentd -g vkagentd -m 700 /var/lib/vkagentd
    inside bash -c '
        setpriv --reuid vkagentd --regid vkagentd --clear-groups --no-new-privs '"$command"' >/tmp/agent.log 2>&1 &
        for ((tries = 0; tries < 60; ++tries)); do
            if SNMP_PERSISTENT_DIR=/tmp/snmp snmpget -v2c -c public -r 0 -t 1 -On 127.0.0.1:1161 1.3.6.1.2.1.1.1.0; then
                kill $! && wait $! && exit 0
                break
            fi
            sleep 0.5
        done
        cat /tmp/agent.log
        exit 1' >"$work/agent" 2>&1 </dev/null || {
        cat "$work/agent"
        die "the agent does not answer, or does not end well"
    }
    grep -F '.1.3.6.1.2.1.1.1.0 = STRING: "Velkoran agent"' "$work/agent" || die "the agent says: $(cat "$work/agent")"
    [ -s "$root/var/lib/vkagentd/store.db" ] || die "the agent has kept nothing"
}

consumer_builds()
{
    local how libdir
    libdir=$(cd "$root/usr" && dirname lib/*/pkgconfig/vkmibh.pc)
    for how in cmake pkg-config; do
        inside /tmp/consumer.sh "$how" "$how" 17 g++ /usr "${libdir%/pkgconfig}" /tmp/consumer /tmp/built \
            >"$work/consumer.log" 2>&1 </dev/null || {
            cat "$work/consumer.log"
            die "the consumer is not built by $how"
        }
        say "the consumer is built by $how"
    done
}

command -v mmdebstrap >/dev/null || skip "mmdebstrap is not installed"
[ "$(id -u)" = 0 ] || skip "needs root"
mkdir -p "$root/proc"
unshare --mount --pid --net --fork --kill-child mount -t proc proc "$root/proc" 2>"$work/why" ||
    skip "no namespaces of its own: $(cat "$work/why")"
make_base
fresh_root
download_inside apt-get update -qq -o APT::Update::Error-Mode=any
files >"$work/before"

say "installing"
download_inside bash -c "apt-get install --download-only $install"
install_inside bash -c "apt-get install $install"
[ "$(stat -c '%U %a' "$root/etc/vkagentd/vkagentd.toml")" != "root 644" ] || die "the configuration is everyone's"
[ -L "$root/etc/systemd/system/multi-user.target.wants/vkagentd.service" ] || die "the service is not enabled"
agent_answers
consumer_builds

say "removing"
install_inside apt-get remove -y -qq vkagentd libvkmibh-dev libvkmibh1
[ -e "$root/etc/vkagentd/vkagentd.toml" ] || die "removing took the configuration"
[ ! -e "$root/usr/bin/vkagentd" ] || die "removing left the agent"
say "installing again, and purging"
install_inside bash -c "apt-get install $install"
install_inside apt-get purge -y -qq --autoremove vkagentd libvkmibh-dev libvkmibh1
files >"$work/after"
diff -u --label before --label after "$work/before" "$work/after" || die "a purge leaves these"
rm -rf "$root"
say "nothing is left"
