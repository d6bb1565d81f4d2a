# Completion for @program@ in fish. The words come from the completion for bash.
complete --command @program@ --no-files --arguments '(set --local words (commandline --tokenize --cut-at-cursor --current-process)
    bash @file@ $words[2..] (commandline --current-token --cut-at-cursor) 2>/dev/null)'
