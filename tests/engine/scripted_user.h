// scripted_user.h - the user and the screen of the engine's tests: answers what a run asks, notes what it shows.
//
// It stands in for the shell and the windows; files, folders and time are the real ones.
#pragma once

#include "ce/types.h"

#include <functional>
#include <string>
#include <vector>

struct ScriptedUser {
    std::u16string comment;                                  // typed into the backup dialogs
    bool confirms = true;                                    // OK in the backup and restore dialogs
    std::u16string choice;                                   // row taken in a chooser; empty: left without one
    std::vector<int> answers;                                // of message boxes, one each; then IDNO
    std::function<void(const std::u16string&)> seesMessage;  // called with each progress message
    std::function<void()> seesCount;                         // called with each counter

    std::vector<std::u16string> shown;  // "box caption|text|type", "choose prompt|row|row", "open title|range|step",
                                        // "dialog kind", "message ...", "step", "animate", "close"
    // Too much for most tests: also "count ...", each text once, and a cursor that changes, "wait" or "no wait".
    bool notesAll = false;
    bool waitCursor = false;  // now

    [[nodiscard]] std::vector<std::u16string> shownWith(const std::u16string& prefix) const;
    [[nodiscard]] std::string transcript() const;  // all of it in one line, parted by "; "
};

extern ScriptedUser gUser;
