#!/usr/bin/env bash
# Takes pictures of the main window and every dialog as a person sees them: the real program under a real X server
# with a window manager, driven by keyboard alone.
#   take_screenshots.sh BIN-FOLDER TARGET-FOLDER [VARIANT...]      variants: light dark double large
# Exit code 77: a tool is missing. 1: a window didn't come.
set -euo pipefail
program=$1/quillbox
target=$2
shift 2
variants=("$@")
[ ${#variants[@]} -gt 0 ] || variants=(light dark double large)

for tool in Xvfb openbox xdotool xprop import; do
    command -v "$tool" >/dev/null || { echo "$tool is missing" >&2; exit 77; }
done

folder=$(mktemp -d)
started=()
finish() {
    for process in "${started[@]}"; do kill "$process" 2>/dev/null || true; done
    rm -rf "$folder"
}
trap finish EXIT

# A session's settings that say which colours and font the user likes, as the toolkit reads them.
write_settings() { # VARIANT
    mkdir -p "$XDG_CONFIG_HOME"
    unset XDG_CURRENT_DESKTOP KDE_SESSION_VERSION
    case $1 in dark | large) export XDG_CURRENT_DESKTOP=KDE KDE_SESSION_VERSION=5 ;; esac
    case $1 in
        dark) cat >"$XDG_CONFIG_HOME/kdeglobals" <<'SETTINGS'
[Colors:Window]
BackgroundNormal=42,46,50
ForegroundNormal=252,252,252
[Colors:View]
BackgroundNormal=27,30,32
BackgroundAlternate=35,38,41
ForegroundNormal=252,252,252
ForegroundInactive=161,169,177
ForegroundLink=29,153,243
ForegroundVisited=155,89,182
[Colors:Button]
BackgroundNormal=49,54,59
ForegroundNormal=252,252,252
[Colors:Selection]
BackgroundNormal=61,174,233
ForegroundNormal=252,252,252
[Colors:Tooltip]
BackgroundNormal=49,54,59
ForegroundNormal=252,252,252
SETTINGS
            ;;
        large) printf '[General]\nfont=DejaVu Sans,18,-1,5,50,0,0,0,0,0\n' >"$XDG_CONFIG_HOME/kdeglobals" ;;
    esac
}

# Windows come and go while xdotool looks at them: then it fails, and is asked again.
shown() { xdotool search --onlyvisible --name "^$1\$" 2>/dev/null | tail -n 1; }
await() { # TITLE
    local window
    for _ in $(seq 600); do
        window=$(shown "$1") || true
        if [ -n "$window" ]; then
            sleep 0.2
            return
        fi
        sleep 0.1
    done
    echo "no window \"$1\"" >&2
    exit 1
}
await_gone() { # TITLE
    for _ in $(seq 600); do
        [ -n "$(shown "$1")" ] || return 0
        sleep 0.1
    done
    echo "the window \"$1\" stays" >&2
    exit 1
}
keys() { xdotool key --delay 80 "$@"; }
picture() { # NAME
    sleep 0.4   # until what was drawn last has reached the screen
    import -window root "$target/$variant-$1.png"
}
main_menu() { # KEY... after the first menu has opened
    await "KORV Quillbox"
    keys F10 "$@"
}

# To the next item that begins so. What is typed within a second belongs to one name.
go_to() { # TEXT
    sleep 1.2
    xdotool type --delay 20 "$1"
}
# Everything that has a picture of its own: marked and not, in ROM, and folders with and without a mark.
mark_in_the_tree() {
    keys Home Right Down Down
    go_to "files"; keys Right
    go_to "windows"; keys Right
    go_to "my documents"; keys Right
    go_to "household"
    go_to "to do"
}

take_all() {
    await "KORV Quillbox"
    picture 1-main
    mark_in_the_tree
    picture 1-tree
    keys Home Left
    main_menu Down
    picture 2-menu
    keys Escape Escape
    main_menu Down Down Down Return
    await "Quillbox"; picture 3-about; keys Escape; await_gone "Quillbox"
    main_menu Down Down Return
    await "Options"; picture 4-options; keys Escape; await_gone "Options"
    main_menu Down Return
    await "File filter"; picture 5-filter; keys Escape; await_gone "File filter"

    main_menu Right Right Return
    await "Full Backup"
    xdotool type --delay 20 "Before the journey"
    keys Tab space Tab space Tab space
    picture 6-full-backup
    keys Return
    await "Select"; picture 7-chooser
    keys Return
    await "Error"; picture 8-message; keys Return; await_gone "Error"
    await "Select"
    keys Home; picture 9-chooser-chosen
    keys Return
    await "Backuping Files"; picture 10-progress; await_gone "Backuping Files"

    main_menu Right Right Return
    await "Full Backup"; keys Tab space Return
    await "Select"; keys Home Return
    await "Info[?]"; picture 11-question; keys Return
    await "Backuping Files"; await_gone "Backuping Files"
    main_menu Right Down Right Down Return
    await "Select"; keys Home Return
    await "Restore selection"; keys Tab Down space Down Down space; picture 12-partial-restore
    keys Escape; await_gone "Restore selection"
    main_menu Right Down Right Return
    await "Select"; keys Home Return
    await "Full Restore"; picture 13-full-restore
    keys Escape; await_gone "Full Restore"
}

mkdir -p "$target"
unset WAYLAND_DISPLAY QT_SCALE_FACTOR QT_STYLE_OVERRIDE
export QT_QPA_PLATFORM=xcb XDG_RUNTIME_DIR=$folder/runtime
mkdir -m 700 "$XDG_RUNTIME_DIR"

# Enough of them that a run lasts until its picture is taken.
mkdir "$folder/documents"
head -c 60000000 /dev/urandom | split -b 20000 -a 4 - "$folder/documents/letter-"

for variant in "${variants[@]}"; do
    export XDG_CONFIG_HOME=$folder/$variant/config
    write_settings "$variant"
    size=800x700
    [ "$variant" = double ] && size=1400x1200
    [ "$variant" = large ] && size=1200x1000
    mkfifo "$folder/number-$variant"
    Xvfb -displayfd 4 -screen 0 "${size}x24" 4>"$folder/number-$variant" 2>/dev/null &
    server=$!
    started+=("$server")
    DISPLAY=:$(head -n 1 "$folder/number-$variant")
    export DISPLAY
    openbox >/dev/null 2>&1 &
    started+=($!)
    # A window that comes before its manager gets no frame and no keyboard.
    until xprop -root _NET_SUPPORTING_WM_CHECK | grep -q 'window id'; do sleep 0.1; done
    [ "$variant" = double ] && export QT_SCALE_FACTOR=2
    "$program" --device "$folder/$variant/device" --folder Documents="$folder/documents" &
    shown=$!
    started+=("$shown")
    take_all
    keys alt+F4
    wait "$shown" || { echo "the program ended with $?" >&2; exit 1; }
    unset QT_SCALE_FACTOR
    kill "$server"
    echo "$variant: $(find "$target" -name "$variant-*.png" | wc -l) pictures in $target"
done
