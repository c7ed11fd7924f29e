#!/bin/bash
# The first process of the machine that vcan-run.sh starts: puts a writable layer over the root, makes the CAN links,
# runs the command, leaves its status where the caller looks for it, and switches the machine off.
run=${0%/init}
export PATH=/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin

switch_off()
{
    sync
    echo o >/proc/sysrq-trigger
    sleep 10
}

die()
{
    echo "vcan-run: in the machine: $*" >&2
    switch_off
}

mount -t proc proc /proc
mount -t sysfs sys /sys
# The consoles are the command's outputs: every byte as it is.
stty -F /dev/tty1 raw -echo 2>/dev/null
stty -F /dev/tty2 raw -echo 2>/dev/null

modules=/usr/lib/uml/modules/$(uname -r)/kernel
layer=/mnt
mount -t tmpfs -o mode=755 tmpfs $layer || die "no memory for a writable layer"
mkdir $layer/upper $layer/work $layer/root
insmod "$modules/fs/overlayfs/overlay.ko" || die "no overlay"
mount -t overlay -o lowerdir=/,upperdir=$layer/upper,workdir=$layer/work overlay $layer/root || die "no overlay"
root=$layer/root

mount -t proc proc $root/proc
mount -t sysfs sys $root/sys
mount -t devtmpfs dev $root/dev
mkdir -p $root/dev/pts $root/dev/shm
mount -t devpts -o ptmxmode=666,mode=620 devpts $root/dev/pts
ln -sf pts/ptmx $root/dev/ptmx 2>/dev/null
mount -t tmpfs -o mode=1777 shm $root/dev/shm
mount -t tmpfs -o mode=755 run $root/run
[ -e $root/dev/fd ] || ln -s /proc/self/fd $root/dev/fd
mkdir -p "$root$run"
mount -t hostfs -o "$run" none "$root$run" || die "no directory of the run"

for module in net/can/can net/can/can-raw drivers/net/can/dev/can-dev drivers/net/can/vcan \
    drivers/net/can/slcan/slcan; do
    insmod "$modules/$module.ko" || die "no module $module"
done
ip link set lo up
for link in vcan0 vcan1; do
    { ip link add dev $link type vcan && ip link set $link mtu 72 && ip link set $link up; } || die "no $link"
done

mapfile -d '' -t command <"$run/command"
mapfile -d '' -t variables <"$run/variables"
user=$(<"$run/user")
as_user=()
[ "$user" = 0 ] || as_user=(setpriv --reuid "$user" --regid "$user" --clear-groups)
# shellcheck disable=SC2016 # the inner shell expands these
env -i "${variables[@]}" setsid chroot $root "${as_user[@]}" \
    /bin/bash -c 'cd "$1" || exit 126; shift; exec "$@"' vcan-run "$(<"$run/directory")" "${command[@]}" \
    </dev/null >/dev/tty1 2>/dev/tty2
status=$?

# Asking for its settings waits until a console has passed on what it holds.
stty -F /dev/tty1 -a >/dev/null
stty -F /dev/tty2 -a >/dev/null
dmesg >"$root$run/dmesg"
echo "$status" >"$root$run/status.new" && mv "$root$run/status.new" "$root$run/status"
switch_off
