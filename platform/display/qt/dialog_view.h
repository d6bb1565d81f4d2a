// dialog_view.h - shows a dialog of the window core, laid out by the dialog's template.
//
// The window core lays the template out for one fixed font (dialog_units.h). arrange() scales this layout to the font
// and style of the desktop, makes the dialog wider for long texts up to a limit, and aligns the texts of a row.
#pragma once

#include "dialog_growth.h"
#include "dialog_units.h"
#include "top_view.h"

#include <QDialog>

#include <vector>

class QLabel;
class QSizeGrip;

namespace platform::qt {

class HeaderBar;

class DialogView final : public QDialog, public TopView {
public:
    // `modal`: the owner takes no input until the dialog is closed.
    DialogView(const window::WindowState& state, const UserInput& input, QWidget* owner, bool modal);

    using View::window;
    QWidget& widget() override { return *this; }
    QWidget& content() override { return content_; }

    void follow(const window::WindowState& state, Changes changes) override;
    void followRun(const RunView& run) override;
    void addControl(View& control, const window::WindowState& state) override;
    void removeControl(View& control) override;
    void followFocus() override;
    void present() override;

    void reject() override;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void changeEvent(QEvent* event) override;
    void closeEvent(QCloseEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    struct Control {
        View* view;
        window::WindowState state;  // as it was when the control was added
    };

    void arrange();
    void layOut();
    QSize findFirstExtra();
    QString sizeKey() const;
    QRect barGeometry() const;
    int headerHeight() const;
    void placeControls(const DialogUnits& units);
    void alignRows(int tolerance);
    double stretchFor(const DialogUnits& units) const;
    void nameControls();
    void showFocus();
    void postFocus(const Control& control);
    QString nameFor(const Control& control) const;
    QString groupAround(const Control& control) const;

    bool postKey(QKeyEvent& event);
    bool tabThroughHeader(bool backward);
    const Control* buttonBeside(const Control& edit) const;
    const Control* focusedControl() const;
    const Control* controlOf(const QWidget* widget) const;

    QWidget content_;
    HeaderBar* header_ = nullptr;
    QLabel* runDetails_ = nullptr;  // below the controls of a dialog with a progress bar
    std::vector<Control> controls_;
    QSizeGrip* grip_ = nullptr;            // needed for a window without a frame of the window manager
    RECT rect_{};                          // of the client area, virtual pixels
    std::vector<GrowingControl> growing_;  // the controls in the layout of the template
    QSize least_;                          // the smallest size of the window
    QSize firstExtra_{0, 0};               // extra_ when the window opened
    QSize extra_{0, 0};                    // how much larger than least_ the window is
};

}  // namespace platform::qt
