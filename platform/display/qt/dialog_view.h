// dialog_view.h - a dialog of the core: its controls where its template puts them.
#pragma once

#include "dialog_units.h"
#include "top_view.h"

#include <QDialog>

#include <vector>

namespace platform::qt {

class HeaderBar;

class DialogView final : public QDialog, public TopView {
public:
    // `modal`: its owner takes no input until it is gone.
    DialogView(const window::WindowState& state, const Courier& courier, QWidget* owner, bool modal);

    using View::window;
    QWidget& widget() override { return *this; }
    QWidget& content() override { return content_; }

    void follow(const window::WindowState& state, Changes changes) override;
    void addControl(View& control, const window::WindowState& state) override;
    void removeControl(View& control) override;
    void followFocus() override;
    void present() override;

    void reject() override;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void changeEvent(QEvent* event) override;
    void closeEvent(QCloseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    struct Control {
        View* view;
        window::WindowState state;
    };

    void arrange();
    void placeControls(const DialogUnits& units);
    void alignRows(int tolerance);
    [[nodiscard]] double stretchFor(const DialogUnits& units) const;
    void nameControls();
    void showFocus();
    void passFocus(const Control& control);
    [[nodiscard]] QString nameFor(const Control& control) const;

    bool passKey(QKeyEvent& event);
    bool tabThroughHeader(bool backward);
    [[nodiscard]] const Control* focusedControl() const;
    [[nodiscard]] const Control* controlOf(const QWidget* widget) const;

    QWidget content_;
    HeaderBar* header_ = nullptr;
    std::vector<Control> controls_;
    RECT place_{};
};

}  // namespace platform::qt
