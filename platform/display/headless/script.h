// script.h - reads a script as a list of actions.
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
    std::string words;  // the line, without blanks around it and without its comment
    Verb verb = Verb::Idle;
    int id = 0;           // of a control or command; the number of an image
    std::u16string text;  // caption, row, typed text or pattern; path of a tree item; date
    int answer = 0;       // IDOK ... IDNO
    KeyStroke key;
};

struct Script {
    std::vector<Action> actions;
    std::string error;  // "line N: ..." for the first line with an error; empty if there is none
};

// Reads UTF-8 with one action per line, to the end or the first error.
Script parseScript(std::istream& in);

}  // namespace platform::headless
