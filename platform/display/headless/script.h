// script.h - the script as text: its lines become actions. Knows nothing of windows.
#pragma once

#include "ce/types.h"

#include <iosfwd>
#include <string>
#include <vector>

namespace platform::headless {

enum class Verb {
    Command,
    Wait,
    Check,
    Uncheck,
    Type,
    Clear,
    Select,
    Press,
    Ok,
    Cancel,
    Close,
    Yes,
    No,
    Answer,
    Key,
    Expand,
    Collapse,
    Click,
    DoubleClick,
    Date,
    Expect,
    ExpectText,
    ExpectImage,
    Print,
    PrintText,
    PrintTree,
    Idle,
};

struct KeyStroke {
    WORD virtualKey = 0;
    bool shift = false;
    bool control = false;
    bool alt = false;
};

struct Action {
    int line = 0;
    std::string words;  // the line as written, without blanks around it and without its comment
    Verb verb = Verb::Idle;
    int id = 0;           // of a control or command; the number of an image
    std::u16string text;  // caption, row, typed text or pattern; a tree item's path; a date
    int answer = 0;       // IDOK ... IDNO
    KeyStroke key;
};

struct Script {
    std::vector<Action> actions;
    std::string error;  // "line N: ..." for the first line that is no action; empty if all are
};

// UTF-8, one action a line; reads to the end or the first error.
[[nodiscard]] Script parseScript(std::istream& in);

}  // namespace platform::headless
