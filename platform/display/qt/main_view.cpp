#include "band_bar.h"
#include "device_menu.h"
#include "dialog_units.h"
#include "pictures.h"
#include "status_bar.h"
#include "view_makers.h"
#include "window_settings.h"

#include <QCloseEvent>
#include <QMainWindow>
#include <QShortcut>

#include <cmath>

namespace platform::qt {

namespace {

using window::Change;
using window::WindowState;

constexpr const char* GeometryKey = "mainWindow/place";
constexpr QSize FirstSize(60, 24);  // in average letters and rows

// The main window. It has the command bands, and the tree below them as its only control.
class MainView final : public QMainWindow, public TopView {
public:
    MainView(const WindowState& state, const UserInput& input, const display::HostServices& host)
        : TopView(state.window, input), deviceMenu_(*this, host, [this] { return window::takesInput(this->window()); }),
          bands_(new BandBar(
              this, [this](WORD id) { this->input().command(this->window(), id); }, deviceMenu_.menu())),
          status_(new StatusBar(this))
    {
        setMenuWidget(bands_);
        setStatusBar(status_);
        setContextMenuPolicy(Qt::NoContextMenu);
        setAttribute(Qt::WA_KeyboardFocusChange);
        auto* menuKey = new QShortcut(Qt::Key_F10, this);
        connect(menuKey, &QShortcut::activated, this, [this] { bands_->openMenu(); });
        follow(state, Changes::all());
    }

    using View::window;
    QWidget& widget() override { return *this; }

    void follow(const WindowState& state, Changes changes) override
    {
        if (changes.has(Change::Text))
            setWindowTitle(toQt(state.text));
        if (state.iconId)
            setWindowIcon(pictureOf(state.iconId, 0));
    }

    void addControl(View& control, const WindowState&) override
    {
        setCentralWidget(&control.widget());
        control.widget().setFocus();
    }
    void removeControl(View&) override {}
    void followBands(HWND bands) override { bands_->show(window::bandsOf(bands)); }
    void followStatus(const window::StatusState& status) override { status_->follow(status); }
    void followRun(const RunView& run) override { status_->followRun(run); }
    void showOutcome(const QString& outcome) override
    {
        status_->showOutcome(outcome);
        toClose_ = false;
    }
    bool isToClose() const override { return toClose_; }

    void present() override
    {
        const QByteArray geometry = windowSettings().value(QLatin1String(GeometryKey)).toByteArray();
        if (!restoreGeometry(geometry)) {
            resize(FirstSize.width() * fontMetrics().averageCharWidth(), FirstSize.height() * fontMetrics().height());
            placeOverOwner(*this);
        }
        show();
        status_->present();
    }

protected:
    void closeEvent(QCloseEvent* event) override
    {
        event->ignore();
        toClose_ = input().close(window()) && !window::takesInput(window());
    }

    void resizeEvent(QResizeEvent* event) override
    {
        QMainWindow::resizeEvent(event);
        const DialogUnits units = dialogUnitsOf(*this);
        window::postResize(window(), static_cast<int>(std::lround(width() / units.x)),
                           static_cast<int>(std::lround(height() / units.y)));
    }

    void hideEvent(QHideEvent* event) override
    {
        if (!event->spontaneous())
            windowSettings().setValue(QLatin1String(GeometryKey), saveGeometry());
        QMainWindow::hideEvent(event);
    }

private:
    DeviceMenu deviceMenu_;
    BandBar* bands_;
    StatusBar* status_;
    bool toClose_ = false;  // the window is to close when the program isn't busy any more
};

}  // namespace

TopView* makeMainView(const WindowState& state, const UserInput& input, const display::HostServices& host)
{
    return new MainView(state, input, host);
}

}  // namespace platform::qt
