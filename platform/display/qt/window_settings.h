// window_settings.h - what the window remembers of itself, such as its size.
//
// It is stored with the user's settings of the desktop and not on the device: the program has no option for it, and the
// device can move between computers.
#pragma once

#include <QSettings>

namespace platform::qt {

inline QSettings windowSettings()
{
    return {QSettings::IniFormat, QSettings::UserScope, QStringLiteral("quillbox"), QStringLiteral("window")};
}

}  // namespace platform::qt
