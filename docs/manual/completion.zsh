#compdef @program@
# Completion for @program@ in zsh. The words come from the completion for bash.
local line word
local -a said folders
while IFS= read -r line; do
    word=${line%%$'\t'*}
    if [[ $word == */ ]]; then
        folders+=("$word")
    elif [[ $line == *$'\t'* ]]; then
        said+=("${word//:/\\:}:${line#*$'\t'}")
    else
        said+=("${word//:/\\:}")
    fi
done < <(bash @file@ "${(@Q)words[2,CURRENT]}" 2>/dev/null)
(( $#folders )) && compadd -S '' -a folders
(( $#said )) && _describe @program@ said
