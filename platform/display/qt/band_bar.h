// band_bar.h - shows the bar at the top of the main window: the menu, and the toolbar to the right of it.
#pragma once

#include "controls/bands_display.h"
#include "window/display.h"

#include <QString>
#include <QWidget>

#include <functional>
#include <vector>

class QHBoxLayout;
class QMenu;
class QMenuBar;
class QToolBar;

namespace platform::qt {

class BandBar final : public QWidget {
public:
    // `command` is called with the id of the menu item or button that the user chose. `ownMenu` is shown after the
    // program's menus.
    BandBar(QWidget* parent, std::function<void(WORD)> command, QMenu& ownMenu);

    void show(const std::vector<window::BandState>& bands);
    // Opens the first menu.
    void openMenu();

private:
    void clear();
    void addMenu(const std::vector<window::MenuItem>& items);
    void addButtons(const window::BandState& band);

    std::function<void(WORD)> command_;
    QMenu& ownMenu_;
    QHBoxLayout* row_;
    QMenuBar* menu_ = nullptr;
    QString shown_;  // the content of the bar, as contentOf() in the source file returns it
};

}  // namespace platform::qt
