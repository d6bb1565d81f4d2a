// main_view.cpp - the program's main window: its bands, and below them its one other child.

#include "band_bar.h"
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

// Size and place are the desktop's to remember, beside the user's other settings: the program has no option
// for them, and its device may lie on a stick that moves between screens.
constexpr const char* PlaceKey = "mainWindow/place";
constexpr QSize FirstLetters(60, 24);  // columns and rows

QSettings settings()
{
    return {QSettings::IniFormat, QSettings::UserScope, QStringLiteral("quillbox"), QStringLiteral("window")};
}

class MainView final : public QMainWindow, public TopView {
public:
    MainView(const WindowState& state, const Courier& courier)
        : TopView(state.window, courier),
          bands_(new BandBar(this, [this](WORD id) { this->courier().command(this->window(), id); }))
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
        const QByteArray place = settings().value(QLatin1String(PlaceKey)).toByteArray();
        if (!restoreGeometry(place)) {
            resize(FirstLetters.width() * fontMetrics().averageCharWidth(),
                   FirstLetters.height() * fontMetrics().height());
            placeOverOwner(*this);
        }
        show();
    }

protected:
    void closeEvent(QCloseEvent* event) override
    {
        event->ignore();
        courier().close(window());
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
            settings().setValue(QLatin1String(PlaceKey), saveGeometry());
        QMainWindow::hideEvent(event);
    }

private:
    BandBar* bands_;
};

}  // namespace

TopView* makeMainView(const WindowState& state, const Courier& courier)
{
    return new MainView(state, courier);
}

}  // namespace platform::qt
