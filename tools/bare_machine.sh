#!/usr/bin/env bash
# What the README promises to a newcomer, on a Debian with nothing but itself, bash and the
# sources: the module of the README is built, served and walked, by the README's own commands.
# Usage: bare_machine.sh WORK
# Needs root, and takes minutes: all is built anew. Ends with 77, and says why, where such a
# root cannot be made.
set -euo pipefail
source=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
mkdir -p "$1"
work=$(cd "$1" && pwd)
suite=$(. /etc/os-release && echo "$VERSION_CODENAME")
root=$work/$suite-bare
agent=

say() { printf 'bare machine: %s\n' "$*"; }
die()
{
    say "FAILED: $*"
    exit 1
}
inside() { exec chroot "$root" env -i HOME=/root PATH=/usr/sbin:/usr/bin:/sbin:/bin "$@" </dev/null; }
finish()
{
    [ -z "$agent" ] || kill "$agent" || say "the agent has ended by itself"
    umount "$root/proc"
}

# The commands of the README's chapter, as they are typed, and what they answer.
chapter() { sed -n '/^## Write a module/,/^## /p' "$source/README.md"; }
start=$(chapter | sed -n 's/^\$ \(\.\/dev .*\)/\1/p')
walk=$(chapter | sed -n 's/^\$ \(snmpwalk .*\)/\1/p')
answer=$(chapter | sed -n '/^\$ snmpwalk/{n;p}')
tools=$(sed -n 's/.*`\(apt-get install -y snmp\)`.*/\1/p' "$source/README.md")
[ -n "$start" ] && [ -n "$walk" ] && [ -n "$answer" ] && [ -n "$tools" ] || die "README has no such commands"

command -v mmdebstrap >/dev/null || {
    say "Skipped: there is no mmdebstrap"
    exit 77
}
[ -e "$root" ] || {
    say "making $root"
    timeout 900 mmdebstrap --mode=root --variant=minbase "$suite" "$root" >"$work/base.log" 2>&1 </dev/null || {
        rm -rf "$root"
        say "Skipped: no root can be made, see $work/base.log"
        exit 77
    }
}
rm -rf "$root/root/vkmibh"
mkdir -p "$root/root/vkmibh"
git -C "$source" archive HEAD | tar -x -C "$root/root/vkmibh"
mount -t proc proc "$root/proc"
trap finish EXIT

say "$start"
began=$SECONDS
inside bash -c "cd ~/vkmibh && exec $start" >"$work/agent.log" 2>&1 &
agent=$!
until grep -q 'ready on' "$work/agent.log"; do
    kill -0 "$agent" || { agent=; tail -n 30 "$work/agent.log"; die "$start"; }
    sleep 1
done
say "ready after $((SECONDS - began)) s"
(inside bash -c "$tools") >"$work/tools.log" 2>&1 || die "$tools"
said=$(inside bash -c "$walk")
printf '%s\n' "$said"
[ "$said" = "$answer" ] || die "$walk: not '$answer'"
say "as the README says"
