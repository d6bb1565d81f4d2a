#!/usr/bin/env bash
# The X server is killed in the middle of a backup: the run has to come to its end and its set has to be whole.
# And a start without any desktop has to say so.
#   lost_display_test.sh BIN-FOLDER
# Exit code 77: a tool is missing.
set -euo pipefail
bin=$1
for tool in Xvfb openbox xdotool xprop; do
    command -v "$tool" >/dev/null || { echo "$tool is missing" >&2; exit 77; }
done
folder=$(mktemp -d)
server=
shown=
finish() {
    for process in $server $shown; do kill -9 "$process" 2>/dev/null || true; done
    rm -rf "$folder"
}
trap finish EXIT
fail() { echo "$*" >&2; [ ! -f "$folder/said" ] || cat "$folder/said" >&2; exit 1; }

unset WAYLAND_DISPLAY DISPLAY
export XDG_CONFIG_HOME=$folder/config XDG_RUNTIME_DIR=$folder/runtime
mkdir -m 700 "$XDG_RUNTIME_DIR"

# No desktop at all, one that isn't there, a toolkit without its plugin.
for without in "" DISPLAY=:4711 QT_QPA_PLATFORM=nothing; do
    code=0
    env $without "$bin/quillbox" --device "$folder/none" 2>"$folder/said" || code=$?
    [ "$code" -eq 3 ] || fail "a start without a desktop (${without:-nothing set}) ended with $code"
    grep -q "no window can be opened" "$folder/said" || fail "a start without a desktop didn't say so"
done

mkdir -p "$folder/device/object-store" "$folder/device/cards/Card"
for i in $(seq 3000); do head -c 20000 /dev/urandom >"$folder/device/object-store/file-$i"; done

mkfifo "$folder/number"
Xvfb -displayfd 4 4>"$folder/number" 2>/dev/null &
server=$!
DISPLAY=:$(head -n 1 "$folder/number")
export DISPLAY QT_QPA_PLATFORM=xcb
openbox >/dev/null 2>&1 &
until xprop -root _NET_SUPPORTING_WM_CHECK | grep -q 'window id'; do sleep 0.1; done
"$bin/quillbox" --device "$folder/device" 2>"$folder/said" &
shown=$!
await() { # TITLE
    for _ in $(seq 600); do
        if [ -n "$(xdotool search --onlyvisible --name "^$1\$" 2>/dev/null)" ]; then
            sleep 0.3
            return
        fi
        sleep 0.1
    done
    fail "no window \"$1\""
}
keys() { xdotool key --delay 60 "$@"; }
await "KORV Quillbox"; keys F10 Right Right Return
await "Full Backup"; keys Tab space Return
await "Select"; keys Home Return
data=$folder/device/cards/Card/QUILBOX/QLBX0001.QDT
for _ in $(seq 600); do
    [ -s "$data" ] && break
    sleep 0.05
done
[ -s "$data" ] || fail "the run has not begun"
kill -9 "$server"
code=0
wait "$shown" || code=$?
shown=
[ "$code" -eq 4 ] || fail "with its desktop gone it ended with $code"
grep -q "the desktop is gone" "$folder/said" || fail "it didn't say that the desktop is gone"
"$bin/quillbox-set" verify "$folder/device/cards/Card/QUILBOX/QLBX0001" || fail "the set isn't whole"
listed=$("$bin/quillbox-set" list "$folder/device/cards/Card/QUILBOX/QLBX0001" | grep -c 'file-') || true
[ "$listed" -eq 3000 ] || fail "$listed of 3000 files are in the set"
echo "all 3000 files are in the set"
