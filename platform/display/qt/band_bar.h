// band_bar.h - the bar across the top of the main window: the menu at the left, the toolbar beside it.
#pragma once

#include "controls/bands_display.h"
#include "window/display.h"

#include <QString>
#include <QWidget>

#include <functional>
#include <vector>

class QHBoxLayout;
class QMenuBar;
class QToolBar;

namespace platform::qt {

class BandBar final : public QWidget {
public:
    // `command` gets the id of the menu item or button that the user chose.
    BandBar(QWidget* parent, std::function<void(WORD)> command);

    void show(const std::vector<window::BandState>& bands);
    // Opens the first menu for the keyboard.
    void openMenu();

private:
    void clear();
    void addMenu(const std::vector<window::MenuItem>& items);
    void addButtons(const window::BandState& band);

    std::function<void(WORD)> command_;
    QHBoxLayout* row_;
    QMenuBar* menu_ = nullptr;
    QString shown_;
};

}  // namespace platform::qt
