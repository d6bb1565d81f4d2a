// scripted_user.h - the user and the screen of the engine's tests: answers what a run asks, and records what it shows.
// It replaces the shell and the windows. Files, folders and databases are real.
#pragma once

#include "ce/types.h"

#include <functional>
#include <string>
#include <vector>

struct ScriptedUser {
    std::u16string comment;                                  // typed into the backup dialogs
    bool confirms = true;                                    // OK in the backup and restore dialogs
    std::u16string choice;                                   // the row that the user chooses; empty: none
    std::vector<bool> answers;                               // to questions; later ones get No
    std::function<void(const std::u16string&)> seesMessage;  // called with each progress message
    std::function<void()> seesCount;                         // called with each counter

    std::vector<std::u16string> shown;    // "ask question", "box caption|text|type", "choose prompt|row|row",
                                          // "registry restored", "open title|range|step",
                                          // "dialog kind", "message ...", "step", "animate", "close"
    std::vector<std::u16string> details;  // the second text of each choice that was offered
    // If true, `shown` also gets "count ..." without repetitions, and "wait" and "no wait" for changes of the cursor.
    bool notesAll = false;
    bool waitCursor = false;  // the cursor that is shown now

    [[nodiscard]] std::vector<std::u16string> shownWith(const std::u16string& prefix) const;
    [[nodiscard]] std::string transcript() const;  // all of `shown`, separated by "; "
};

extern ScriptedUser gUser;

// Lets the user answer what the runs ask.
void answerRuns();
