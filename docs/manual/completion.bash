# Completion for @program@ in bash, and the words for the completions in zsh and fish.
# bash @file@ WORD... prints the candidates for the last word, one a line, each with a tab and its description.

# Each row: the command, a word or the number of an argument, the kind of its value, its description.
_@name@_rows=$(cat <<'ROWS'
@rows@
ROWS
)

# Paths that begin with the word. A folder ends with a slash.
_@name@_paths() { # WORD FIND-TEST...
    local word=${1/#\~\//$HOME/} path
    compgen -f -- "$word" | while IFS= read -r path; do
        if [[ -d $path ]]; then
            path+=/
        elif [[ -n $2 && $path != $2 ]]; then
            continue
        fi
        [[ $1 = \~/* ]] && path="~/${path#"$HOME/"}"
        printf '%s\n' "$path"
    done
}

# The numbers of the sets on the storage: the main device, a card, or a folder of this computer.
_@name@_numbers() {
    local folder=$device/cards/$storage
    [[ $storage = 'Main device' ]] && folder=$device/object-store
    [[ $storage = */* ]] && folder=${storage/#\~\//$HOME/}
    (cd "$folder/QUILBOX" 2>/dev/null && printf '%s\n' QLBX*.QLT | sed -nE 's/^QLBX0*([0-9]+)\.QLT$/\1/p')
}

# The values of a kind. device, storage and set are what the other words name.
_@name@_values() { # KIND WORD
    local store=$device/object-store path
    case $1 in
        *'|'*) tr '|' '\n' <<<"$1" | grep -vx FILE ;;&
        STORAGE) printf '%s\n' 'Main device' ; (cd "$device/cards" 2>/dev/null && printf '%s\n' *) ;;&
        ITEM)
            echo registry
            [[ -n $set ]] && quillbox-set list "$set" 2>/dev/null | sed -nE 's/^(file|database) +[0-9]+ //p'
            [[ -z $set ]] && quillbox-device database list "$device" 2>/dev/null | sed -nE 's/^database (.*): type .*/\1/p'
            [[ -z $set && $2 = /* ]] && _@name@_paths "$store$2" | sed "s|^$store||" ;;
        DATABASE) quillbox-device database list "$device" 2>/dev/null | sed -nE 's/^database (.*): type .*/\1/p' ;;
        NUMBER) _@name@_numbers ;;
        PROFILE) (cd "${XDG_CONFIG_HOME:-$HOME/.config}/quillbox" 2>/dev/null && printf '%s\n' *.toml | sed 's/\.toml$//') ;;
        NAME=DIR*) [[ $2 = *=* ]] && _@name@_paths "${2#*=}" '/' | sed "s|^|${2%%=*}=|" ;;
        DIR | DEVICE) _@name@_paths "$2" '/' ;;
        SET | WHERE | OLD | NEW) _@name@_paths "$2" '*.QLT' ;;
    esac
    case $1 in
        STORAGE) _@name@_paths "$2" '/' ;;
        FILE*) _@name@_paths "$2" '' ;;
    esac
}

_@name@_candidates() { # WORD...
    local command='' argument=1 value='' device=${XDG_DATA_HOME:-$HOME/.local/share}/quillbox/device storage='' set='' word row
    while (($# > 1)); do
        word=$1
        shift
        if [[ -n $value ]]; then
            [[ $value = DEVICE ]] && device=$word
            [[ $value = STORAGE ]] && storage=$word
            value=''
        elif [[ $word = -* ]]; then
            value=$(awk -F'\t' -v c="$command" -v w="$word" '(c == $1 || $1 == "") && w == $2 { print $3; exit }' <<<"$_@name@_rows")
        elif row=$(grep -m1 -P "^\Q$command\E\t\Q$word\E\tCOMMAND\t" <<<"$_@name@_rows"); then
            command+=${command:+ }$word
        else
            case $(awk -F'\t' -v c="$command" -v n="$argument" 'c == $1 && n == $2 { print $3 }' <<<"$_@name@_rows") in
                DEVICE) device=$word ;;
                SET) set=$word ;;
            esac
            argument=$((argument + 1))
        fi
    done
    local last=$1
    if [[ -n $value ]]; then
        _@name@_values "$value" "$last"
    elif [[ $last = -* ]]; then
        awk -F'\t' -v c="$command" '(c == $1 || $1 == "" && @global@) && $2 ~ /^-/ { print $2 "\t" $4 }' <<<"$_@name@_rows"
    else
        awk -F'\t' -v c="$command" 'c == $1 && $3 == "COMMAND" { print $2 "\t" $4 }' <<<"$_@name@_rows"
        _@name@_values "$(awk -F'\t' -v c="$command" -v n="$argument" \
            'c == $1 && (n == $2 || $2 ~ /\+$/ && n > $2 + 0) { print $3; exit }' <<<"$_@name@_rows")" "$last"
    fi | awk -F'\t' -v w="${last/#\~\//\~\/}" 'index($1, w) == 1 && !seen[$1]++'
}

if [[ ${BASH_SOURCE[0]} = "$0" ]]; then
    _@name@_candidates "$@"
    exit
fi

_@name@() {
    local line words=("${COMP_WORDS[@]:1:COMP_CWORD}")
    # bash takes = for a word of its own.
    if ((COMP_CWORD > 2)) && [[ ${words[-1]} = '=' || ${words[-2]} = '=' ]]; then
        words=(--device "${words[-1]#=}")
    fi
    COMPREPLY=()
    while IFS= read -r line; do
        COMPREPLY+=("$(printf %q "${line%%$'\t'*}" | sed 's/^\\~/~/')")
    done < <(_@name@_candidates "${words[@]}")
    [[ ${#COMPREPLY[@]} -eq 1 && ${COMPREPLY[0]} = */ ]] && compopt -o nospace
}
complete -F _@name@ @program@
