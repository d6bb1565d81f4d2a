// device_menu.h - holds the menu that the main window shows beside the program's own menus. Its commands open a device,
// add folders of the host (the Linux system) to the device, as memory cards or as ordinary folders, and list the
// folders in the tree again.
#pragma once

#include "start/window_module.h"

#include <QCoreApplication>
#include <QMenu>

class QWidget;

namespace platform::qt {

class DeviceMenu {
    Q_DECLARE_TR_FUNCTIONS(DeviceMenu)

public:
    // `window` outlives the menu and owns the dialogs that the menu opens. `programRests` returns false while the
    // program is busy. In that case the commands that open a device or add a card or folder are disabled. No folder may
    // be added then, because folders are stored in the database that a backup or restore uses.
    DeviceMenu(QWidget& window, const display::HostServices& host, std::function<bool()> programRests);

    QMenu& menu() { return menu_; }

private:
    void askForFolder(const QString& title, const std::function<std::string(const std::filesystem::path&)>& action);

    QWidget& window_;
    const display::HostServices& host_;
    QMenu menu_;
};

}  // namespace platform::qt
