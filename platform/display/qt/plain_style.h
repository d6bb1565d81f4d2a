// plain_style.h - the toolkit's own style, for desktops that bring none, made fit for dark colours and large fonts.
#pragma once

namespace platform::qt {

// After the application is there. Does nothing where the desktop has a style of its own.
void usePlainStyle();

}  // namespace platform::qt
