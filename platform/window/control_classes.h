// control_classes.h - the core's own window classes, each made in the file of its control.
#pragma once

#include "window/core.h"

namespace platform::window {

[[nodiscard]] WindowClass dialogClass();
[[nodiscard]] WindowClass buttonClass();
[[nodiscard]] WindowClass staticClass();
[[nodiscard]] WindowClass editClass();
[[nodiscard]] WindowClass listBoxClass();
[[nodiscard]] WindowClass progressClass();
[[nodiscard]] WindowClass treeViewClass();
[[nodiscard]] WindowClass datePickerClass();
[[nodiscard]] WindowClass bandsClass();
[[nodiscard]] WindowClass commandBarClass();

inline constexpr std::u16string_view DialogClassName = u"Dialog";
inline constexpr std::u16string_view BandsClassName = u"ReBarWindow32";
inline constexpr std::u16string_view CommandBarClassName = u"ToolbarWindow32";

template <class State>
[[nodiscard]] std::unique_ptr<ControlState> makeStateOf(DWORD)
{
    return std::make_unique<State>();
}

}  // namespace platform::window
