#!/usr/bin/env bash
# Runs a command in a throw-away machine whose kernel knows CAN: user-mode Linux, with the files of this computer as
# its root. What the machine writes stays in its memory and goes with it.
set -u

usage()
{
    cat >&2 <<'END'
Usage: vcan-run.sh [OPTION]... COMMAND [ARGUMENT]...

  -t SECONDS       time limit of the whole machine, by the clock on the wall (default 300)
  -m SIZE          memory of the machine, with all that it writes (default 768M)
  -u UID           run COMMAND as this user (default 0)
  -e NAME[=VALUE]  give COMMAND this variable, or the caller's of that name; repeatable
  -k               keep the directory of the run, with the kernel's log, and say where it is

In the machine the links vcan0 and vcan1 are up, for CAN FD too; the module slcan is loaded. It has one processor.

The exit status is that of COMMAND (128 and more: a signal); 124 for the time limit; 125 if the machine did not start,
died, or gave no status.
END
    exit 125
}

fail() { echo "vcan-run: $*" >&2; exit 125; }

limit=300 memory=768M user=0 keep=0 variables=()
while getopts t:m:u:e:k option; do
    case $option in
        t) limit=$OPTARG ;;
        m) memory=$OPTARG ;;
        u) user=$OPTARG ;;
        e)
            case $OPTARG in
                *=*) variables+=("$OPTARG") ;;
                *) [ -z "${!OPTARG+set}" ] || variables+=("$OPTARG=${!OPTARG}") ;;
            esac
            ;;
        k) keep=1 ;;
        *) usage ;;
    esac
done
shift $((OPTIND - 1))
[ $# -gt 0 ] || usage
kernel=$(command -v linux.uml) || fail "there is no linux.uml (Debian package user-mode-linux)"

# A CI job may come with any of these closed, and the machine's consoles are bound to them.
[ -e /proc/self/fd/0 ] || exec 0</dev/null
[ -e /proc/self/fd/1 ] || exec 1>/dev/null
[ -e /proc/self/fd/2 ] || exec 2>/dev/null

here=$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")
run=$(readlink -f "$(mktemp -d "${TMPDIR:-/tmp}/vcan-run.XXXXXXXX")") || fail "no directory for the run"
machine=

# The kernel makes itself a session of its own. So it is asked through timeout first, then its whole group is ended.
stop_machine()
{
    local session
    session=$(cat "$run/uml/machine/pid" 2>/dev/null)
    kill -TERM "$machine" 2>/dev/null
    for _ in 1 2 3 4 5 6 7 8 9 10; do
        kill -0 "$machine" 2>/dev/null || break
        sleep 0.2
    done
    [ -z "$session" ] || kill -KILL -- "-$session" 2>/dev/null
    kill -KILL -- "-$machine" 2>/dev/null
    machine=
}

# shellcheck disable=SC2317 # called by the traps
clean_up()
{
    [ -z "$machine" ] || stop_machine
    if [ "$keep" = 1 ]; then
        echo "vcan-run: kept $run" >&2
    else
        rm -rf "$run"
    fi
}
trap clean_up EXIT
trap 'exit 130' INT
trap 'exit 143' TERM
trap 'exit 129' HUP

# The machine finds what it is to do in these files. The variables of the caller are not its business.
printf '%s\0' "$@" >"$run/command"
printf '%s\0' PATH=/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin HOME=/root "LANG=${LANG:-C.UTF-8}" \
    "${variables[@]}" >"$run/variables"
printf '%s' "$PWD" >"$run/directory"
printf '%s' "$user" >"$run/user"
{ cp "$here/guest.sh" "$run/init" && chmod 755 "$run" "$run/init"; } || fail "cannot write to $run"

# A system call of the machine is a switch between two processes of this computer: it costs 14 us where both share a
# processor, and 70 us where they do not. Runs that go on together take different ones.
pin=()
if command -v taskset >/dev/null; then
    mapfile -t allowed < <(taskset -pc $$ | sed 's/.*: //' | tr , '\n' \
        | while IFS=- read -r first last; do seq "$first" "${last:-$first}"; done)
    pin=(taskset -c "${allowed[$(($$ % ${#allowed[@]}))]}")
fi

# Started by root, the machine could reach every file of this computer. So it gets a view of its own in which all
# disks but the run's directory are read-only.
cat >"$run/confine" <<'END'
mount --bind "$1" "$1" || exit 125
while read -r device place _; do
    place=$(printf %b "$place")
    case $device in
        /dev/* | overlay) [ "$place" = "$1" ] || mount -o remount,bind,ro "$place" 2>/dev/null ;;
    esac
done </proc/self/mounts
shift
exec "$@"
END
confined=()
if [ "$(id -u)" = 0 ] && unshare -m --propagation private true 2>/dev/null; then
    confined=(unshare -m --propagation private bash "$run/confine" "$run")
fi

# Console 0 takes the kernel's messages, 1 and 2 the command's two outputs.
exec 3>&1 4>&2
set -m
timeout -k 5 "$limit" "${confined[@]}" "${pin[@]}" "$kernel" root=/dev/root rootfstype=hostfs rootflags=/ ro \
    mem="$memory" init="$run/init" uml_dir="$run/uml" umid=machine \
    console=tty0 con=null con0=null,fd:5 con1=null,fd:3 con2=null,fd:4 noreboot quiet loglevel=4 \
    </dev/null >"$run/kernel.log" 2>&1 5>&1 &
machine=$!
exec 3>&- 4>&-
SECONDS=0
wait "$machine" 2>/dev/null
ended=$?
stop_machine 2>/dev/null

[ ! -s "$run/status" ] || exit "$(<"$run/status")"
if [ $ended = 124 ] || { [ $ended = 137 ] && [ "$SECONDS" -ge "$limit" ]; }; then
    echo "vcan-run: time limit of $limit s" >&2
    exit 124
fi
echo "vcan-run: the machine ended ($ended) without a status; the end of its kernel's log:" >&2
tail -20 "$run/kernel.log" >&2
exit 125
