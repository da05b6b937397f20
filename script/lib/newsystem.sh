# SPDX-FileCopyrightText: 2026 The Corvane developers
# SPDX-License-Identifier: MIT
# shellcheck shell=bash

# For scripts that try something in a new Debian system. It is in the folder $root, and $log gets the
# output of its commands.

root=
log=
user=tester
archive=${DEBIAN_MIRROR:-http://deb.debian.org/debian}
window_class="^$(sed -n 's/^StartupWMClass=//p' packaging/*.desktop)\$"
# With mounts and processes of its own, so that none of them outlives the script.
own=(unshare --mount --pid --fork --kill-child --mount-proc)
# shellcheck disable=SC2034 # for the scripts
on_own_display=(xvfb-run --auto-servernum --server-args="-screen 0 1280x1024x24")

fail() {
    echo "$(basename "$0"): $*" >&2
    exit 1
}

step() {
    echo "- $*"
}

# Shows the output of a command only when it fails.
quietly() {
    if ! "$@" >"$log" 2>&1; then
        tail -n 30 "$log" >&2
        fail "failed: $*"
    fi
}

# Waits up to half a minute for a command to succeed.
wait_for() {
    for ((attempt = 0; attempt < 150; ++attempt)); do
        if "$@" >/dev/null 2>&1; then
            return
        fi
        sleep 0.2
    done
    cat "$log" >&2
    fail "waited in vain for: $*"
}

# Ends with 77, which CTest and others take for "skipped", if this machine cannot have such a system.
require_own_system() {
    [ "$(id -u)" -eq 0 ] || fail "needs root, to make a new system"
    if ! "${own[@]}" mount -t tmpfs tmpfs /mnt; then
        echo "$(basename "$0"): tried nothing: this machine allows no mounts and process" \
            "namespaces of its own (in a container: CAP_SYS_ADMIN)" >&2
        exit 77
    fi
}

# The code name of this machine's Debian release.
this_release() {
    sed -n 's/^VERSION_CODENAME=//p' /etc/os-release
}

# make_system RELEASE [OPTION OF DEBOOTSTRAP]...
make_system() {
    quietly debootstrap --variant=minbase "${@:2}" "$1" "$root" "$archive"
    # The new system reaches the archive as this one does.
    local file
    for file in /etc/hosts /etc/resolv.conf /etc/apt/apt.conf.d/99*; do
        if [ -f "$file" ]; then
            cp "$file" "$root$file"
        fi
    done
    file=/etc/apt/sources.list.d/debian.sources
    if [ -f "$file" ]; then
        sed "s/\b$(this_release)\b/$1/g" "$file" >"$root$file"
        rm "$root/etc/apt/sources.list"
    fi
    # It need not survive a power failure.
    echo force-unsafe-io >"$root/etc/dpkg/dpkg.cfg.d/unsafe-io"
    quietly in_root useradd --create-home --shell /bin/bash "$user"
}

# What the kernel and a boot would provide, for as long as this process's mounts exist.
mount_system() {
    mount -t proc proc "$root/proc"
    mount -t sysfs -o ro sysfs "$root/sys"
    mount -t devpts -o newinstance,ptmxmode=0666 devpts "$root/dev/pts"
    mount -t tmpfs -o mode=1777 tmpfs "$root/dev/shm"
    mount -t tmpfs -o mode=1777 tmpfs "$root/run"
    ln -sf pts/ptmx "$root/dev/ptmx"
    install -d -m 1777 "$root/run/lock"
    install -d -m 700 -o "$(in_root id -u "$user")" "$root/run/user/$user"
    if [ -n "${XAUTHORITY:-}" ]; then
        install -m 644 "$XAUTHORITY" "$root/run/xauthority"
    fi
}

in_root() {
    env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin LC_ALL=C.UTF-8 HOME=/root TERM=dumb \
        DEBIAN_FRONTEND=noninteractive ${http_proxy:+http_proxy="$http_proxy"} \
        ${https_proxy:+https_proxy="$https_proxy"} chroot "$root" "$@"
}

exec_as_user() {
    exec env -i PATH=/usr/bin:/bin:/usr/sbin LC_ALL=C.UTF-8 TERM=dumb HOME="/home/$user" \
        XDG_RUNTIME_DIR="/run/user/$user" ${DISPLAY:+DISPLAY="$DISPLAY"} XAUTHORITY=/run/xauthority \
        chroot --userspec="$user:$user" "$root" "$@"
}

as_user() {
    (exec_as_user "$@")
}

# Connects the window of a session to its simulated camera; the session's output is in $log.
connect_window() {
    local window
    wait_for xdotool search --onlyvisible --class "$window_class"
    window=$(xdotool search --onlyvisible --class "$window_class")
    xdotool getwindowname "$window" | grep -qx Corvane || fail "the window is not called Corvane"
    # From the list of ports past the list of speeds to Connect. Keys need no window manager.
    wait_for grep -q Disconnected "$log"
    xdotool windowfocus --sync "$window"
    xdotool key --delay 200 Tab Tab space
    wait_for grep -q -e '-> HELLO ack' "$log"
    wait_for grep -q 'ClientVersion: 1.0.0.6' "$log" # as the window has decoded it
    grep -E '(<-|->) HELLO|ClientVersion' "$log"
}

# Ends a session, given the process of its simulator, which passes the signal on to Corvane and exits
# with its status.
end_session() {
    local status=0
    kill "$1"
    wait "$1" || status=$?
    [ "$status" -eq $((128 + 15)) ] || fail "the session ended with $status"
}
