#include "band_bar.h"
#include "device_menu.h"
#include "dialog_units.h"
#include "pictures.h"
#include "view_makers.h"

#include <QCloseEvent>
#include <QMainWindow>
#include <QSettings>
#include <QShortcut>

#include <cmath>

namespace platform::qt {

namespace {

using window::Change;
using window::WindowState;

// The size and position are stored with the user's settings of the desktop and not on the device: the program has no
// option for them, and the device can move between computers.
constexpr const char* GeometryKey = "mainWindow/place";
constexpr QSize FirstSize(60, 24);  // in average letters and rows

QSettings settings()
{
    return {QSettings::IniFormat, QSettings::UserScope, QStringLiteral("quillbox"), QStringLiteral("window")};
}

// Has the command bands, and the tree below them as its only control.
class MainView final : public QMainWindow, public TopView {
public:
    MainView(const WindowState& state, const UserInput& input, const display::HostServices& host)
        : TopView(state.window, input), deviceMenu_(*this, host, [this] { return window::takesInput(this->window()); }),
          bands_(new BandBar(
              this, [this](WORD id) { this->input().command(this->window(), id); }, deviceMenu_.menu()))
    {
        setMenuWidget(bands_);
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

    void present() override
    {
        const QByteArray geometry = settings().value(QLatin1String(GeometryKey)).toByteArray();
        if (!restoreGeometry(geometry)) {
            resize(FirstSize.width() * fontMetrics().averageCharWidth(), FirstSize.height() * fontMetrics().height());
            placeOverOwner(*this);
        }
        show();
    }

protected:
    void closeEvent(QCloseEvent* event) override
    {
        event->ignore();
        input().close(window());
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
            settings().setValue(QLatin1String(GeometryKey), saveGeometry());
        QMainWindow::hideEvent(event);
    }

private:
    DeviceMenu deviceMenu_;
    BandBar* bands_;
};

}  // namespace

TopView* makeMainView(const WindowState& state, const UserInput& input, const display::HostServices& host)
{
    return new MainView(state, input, host);
}

}  // namespace platform::qt
