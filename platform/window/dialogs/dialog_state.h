// dialog_state.h - the data that the dialog manager stores about each dialog.
#pragma once

#include "window/core.h"

#include "ce/dialog.h"

namespace platform::window {

inline constexpr std::u16string_view DialogClassName = u"Dialog";

struct DialogState : ClassState {
    DLGPROC procedure = nullptr;  // null until all controls exist
    bool modal = false;
    bool ended = false;
    INT_PTR result = 0;
    int defaultId = 0;             // of the default button; 0: none
    bool messageBox = false;       // MessageBoxW made the dialog
    UINT messageBoxType = 0;       // of a message box: its MB_ bits
    std::u16string questionKind;   // of a question that a job asks (job_questions.h), otherwise empty
    HWND ownerToEnable = nullptr;  // the owner window that this dialog has disabled; null: none

    void describe(const Window& window, WindowState& state) const REQUIRES(coreMutex) override;
    bool isDialog() const REQUIRES(coreMutex) override { return true; }
    const Window* buttonForEnter(const Window& window) const REQUIRES(coreMutex) override;
    [[nodiscard]] HWND takeOwnerToEnable() REQUIRES(coreMutex) override
    {
        return std::exchange(ownerToEnable, nullptr);
    }
};

// Null for a window that the dialog manager didn't make.
DialogState* findDialog(const Window* window) REQUIRES(coreMutex);

}  // namespace platform::window
