// window_settings.h - opens the settings of the windows on the desktop, such as their sizes.
//
// The settings are stored with the user's settings on the host (the Linux system). They aren't stored on the device,
// because the device can move to another computer. Nor are they among the program's options, which the device stores.
#pragma once

#include <QSettings>

namespace platform::qt {

inline QSettings windowSettings()
{
    return {QSettings::IniFormat, QSettings::UserScope, QStringLiteral("quillbox"), QStringLiteral("window")};
}

}  // namespace platform::qt
