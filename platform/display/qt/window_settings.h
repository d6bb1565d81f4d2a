// window_settings.h - settings of the windows on the desktop, such as their sizes.
//
// The settings are stored with the user's settings on the host. They aren't on the device, because the program has no
// options for them and the device can move to another computer.
#pragma once

#include <QSettings>

namespace platform::qt {

inline QSettings windowSettings()
{
    return {QSettings::IniFormat, QSettings::UserScope, QStringLiteral("quillbox"), QStringLiteral("window")};
}

}  // namespace platform::qt
