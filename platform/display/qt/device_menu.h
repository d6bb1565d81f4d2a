// device_menu.h - the menu that the window adds to those of the program. It opens devices, and adds cards and folders
// of the host.
#pragma once

#include "start/window_module.h"

#include <QCoreApplication>
#include <QMenu>

class QWidget;

namespace platform::qt {

class DeviceMenu {
    Q_DECLARE_TR_FUNCTIONS(DeviceMenu)

public:
    // `window` outlives the menu and is the owner of its dialogs. If `programRests` returns false, the program is busy.
    // The user can't open or add anything then, because the host stores additions in the database that a run uses.
    DeviceMenu(QWidget& window, const display::HostServices& host, std::function<bool()> programRests);

    QMenu& menu() { return menu_; }

private:
    void askForFolder(const QString& title, const std::function<std::string(const std::filesystem::path&)>& action);

    QWidget& window_;
    const display::HostServices& host_;
    QMenu menu_;
};

}  // namespace platform::qt
