#include "desktop.h"

#include "resource/resource_file.h"
#include "resources/embedded_resources.h"

#include "ce/controls.h"
#include "ce/dialog.h"
#include "ce/resource.h"
#include "ce/window.h"
#include "ce/winmain.h"

#include <QAbstractButton>
#include <QApplication>
#include <QHelpEvent>
#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QTemporaryDir>
#include <QToolTip>

#include <algorithm>
#include <stdexcept>

namespace window = platform::window;

namespace {

QWidget* findWindow(const QString& title)
{
    for (QWidget* each : QApplication::topLevelWidgets()) {
        if (each->isVisible() && each->windowTitle() == title && !qobject_cast<QMenu*>(each))
            return each;
    }
    return nullptr;
}

// Returns the front one of the window core's visible windows, or null if there is none.
HWND frontWindow()
{
    for (const HWND each : window::topLevelWindows()) {
        if (window::WindowState state; window::readWindow(each, state) && state.visible)
            return each;
    }
    return nullptr;
}

bool isInFront(const QString& title)
{
    window::WindowState state;
    return window::readWindow(frontWindow(), state) && QString::fromStdU16String(state.text) == title;
}

struct Rows {
    std::vector<std::u16string> texts;
    int extent = 0;
};

INT_PTR rowsProcedure(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam)
{
    if (message == WM_INITDIALOG) {
        const auto& rows = *reinterpret_cast<const Rows*>(lParam);
        SetWindowTextW(dialog, u"Rows");
        for (const std::u16string& text : rows.texts)
            SendDlgItemMessageW(dialog, 1006, LB_ADDSTRING, 0, reinterpret_cast<LPARAM>(text.c_str()));
        if (rows.extent)
            SendDlgItemMessageW(dialog, 1006, LB_SETHORIZONTALEXTENT, static_cast<WPARAM>(rows.extent), 0);
    } else if (message == WM_COMMAND && LOWORD(wParam) == IDCANCEL) {
        EndDialog(dialog, 0);
    }
    return FALSE;
}

}  // namespace

int main(int count, char** words)
{
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    const QTemporaryDir settings;
    qputenv("XDG_CONFIG_HOME", settings.path().toLocal8Bit());
    testing::InitGoogleTest(&count, words);
    const QApplication application(count, words);
    QApplication::setQuitOnLastWindowClosed(false);
    return RUN_ALL_TESTS();
}

const std::vector<DialogOfMenu>& dialogsOfMenu()
{
    static const std::vector<DialogOfMenu> all{{{"File", "Filter..."}, "File filter"},
                                               {{"File", "Options..."}, "Options"},
                                               {{"File", "About..."}, "Quillbox"},
                                               {{"Operations", "Backup", "Full..."}, "Full Backup"}};
    return all;
}

QString nameOf(const QWidget& widget)
{
    if (!widget.accessibleName().isEmpty())
        return widget.accessibleName();
    if (const auto* button = qobject_cast<const QAbstractButton*>(&widget))
        return button->text().remove(u'&');
    const auto* label = qobject_cast<const QLabel*>(&widget);
    return label ? label->text() : QString();
}

QWidget* findControl(QWidget& window, const QString& name)
{
    for (QWidget* child : window.findChildren<QWidget*>()) {
        if (child->isVisible() && !qobject_cast<QLabel*>(child) && nameOf(*child) == name)
            return child;
    }
    return nullptr;
}

QModelIndex findRow(const QAbstractItemModel& model, const QString& text, const QModelIndex& above)
{
    return model.match(model.index(0, 0, above), Qt::DisplayRole, text, 1, Qt::MatchExactly | Qt::MatchCaseSensitive)
        .value(0);
}

QString tipAt(const QAbstractItemView& view, const QPoint& point)
{
    QHelpEvent asked(QEvent::ToolTip, point, view.viewport()->mapToGlobal(point));
    QApplication::sendEvent(view.viewport(), &asked);
    return QToolTip::text();
}

void Desktop::start(const std::function<void()>& program)
{
    ++running_;
    programs_.emplace_back([this, program] {
        program();
        --running_;
    });
}

void Desktop::SetUp()
{
    ASSERT_TRUE(platform::resource::setResources(quillbox::embeddedResources()));
    auto opened = platform::device::openDevice(at("device"), {}, true);
    ASSERT_TRUE(opened.device) << opened.error.sentence;
    device_ = std::move(opened.device);
    screen_.emplace(
        platform::display::HostServices{.showFolder = [this](const std::filesystem::path& shown,
                                                             bool card) { return device_->showFolder(shown, card); },
                                        .openDevice = {},
                                        .restoreRequest = &request_});
    start([] {
        WCHAR none[] = u"";
        WinMain(reinterpret_cast<HINSTANCE>(UINT_PTR{1}), nullptr, none, SW_SHOW);
    });
    // A window becomes active some time after it appears. Without this wait, the main window could take the focus from
    // a dialog.
    const QWidget& main = await(MainTitle);
    ASSERT_TRUE(eventually([&] { return main.isActiveWindow(); }));
}

void Desktop::TearDown()
{
    const auto closeAll = [this] {
        const QWidgetList all = QApplication::topLevelWidgets();
        const auto isOpen = [](const QWidget* each) { return each->isVisible() && each->windowTitle() != MainTitle; };
        const auto other = std::ranges::find_if(all, isOpen);
        QWidget* foremost = other == all.end() ? findWindow(MainTitle) : *other;
        if (QWidget* modal = QApplication::activeModalWidget())
            foremost = modal;
        if (foremost)
            foremost->close();
        return running_ == 0;
    };
    EXPECT_TRUE(eventually(closeAll));
    for (std::thread& program : programs_) {
        if (program.joinable())
            program.join();
    }
    screen_.reset();
    device_.reset();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

QWidget& Desktop::await(const QString& title)
{
    if (!eventually([&] { return isThere(title); }))
        throw std::runtime_error("no window \"" + title.toStdString() + "\"");
    return *findWindow(title);
}

bool Desktop::isThere(const QString& title)
{
    return findWindow(title) != nullptr;
}

bool Desktop::rests()
{
    const auto windows = window::topLevelWindows();
    return windows.size() == 1 && window::takesInput(windows.front());
}

void Desktop::endBetweenFrames()
{
    ASSERT_TRUE(window::postClose(window::topLevelWindows().front()));
    programs_.front().join();
    screen_.reset();
}

void Desktop::act(QWidget& target, const std::function<void()>& input)
{
    const QString title = target.windowTitle();
    const auto require = [&](const std::function<bool()>& holds) {
        if (!eventually(holds))
            throw std::runtime_error("the program takes no input in \"" + title.toStdString() + "\"");
        drawFrame();
    };
    require([&] {
        if (!isInFront(title) || !window::takesInput(frontWindow()))
            return false;
        // There is no window manager here, so nothing activates a window when the window over it disappears.
        if (!target.isActiveWindow())
            target.activateWindow();
        return target.isActiveWindow();
    });
    const HWND front = frontWindow();
    input();
    require([&] { return frontWindow() != front || window::takesInput(front); });
}

void Desktop::click(QWidget& window, const QString& name)
{
    act(window, [&] {
        QWidget* control = findControl(window, name);
        ASSERT_TRUE(control) << name.toStdString();
        // Check boxes are wider than their text: a point near the left edge is always inside.
        QTest::mouseClick(control, Qt::LeftButton, {}, QPoint(8, control->height() / 2));
    });
}

void Desktop::clickRow(QWidget& window, const QString& text)
{
    auto* list = window.findChild<QListView*>();
    act(window, [&] {
        const QModelIndex row = findRow(*list->model(), text);
        ASSERT_TRUE(row.isValid()) << "no row " << text.toStdString();
        list->scrollTo(row);
        QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, list->visualRect(row).center());
    });
}

QWidget& Desktop::open(const DialogOfMenu& dialog)
{
    QWidget& main = await(MainTitle);
    act(main, [&] {
        QWidget* level = main.findChild<QMenuBar*>();
        QAction* wanted = nullptr;
        for (const QString& text : dialog.path) {
            const QList<QAction*> actions = level->actions();
            const auto found = std::ranges::find_if(
                actions, [&](const QAction* action) { return action->text().remove(u'&') == text; });
            ASSERT_NE(found, actions.end()) << text.toStdString();
            wanted = *found;
            level = wanted->menu();
        }
        wanted->trigger();
    });
    return await(dialog.title);
}

QWidget& Desktop::ask(const QString& text, const QString& title, UINT type, std::atomic<int>* answer)
{
    start([=, text = text.toStdU16String(), caption = title.toStdU16String()] {
        const int chosen = MessageBoxW(nullptr, text.c_str(), caption.c_str(), type);
        if (answer)
            *answer = chosen;
    });
    return await(title);
}

QListView& Desktop::showRows(const std::vector<std::u16string>& rows, int extent)
{
    start([made = Rows{rows, extent}] {
        const HRSRC resource = FindResourceW(nullptr, MAKEINTRESOURCEW(109), RT_DIALOG);
        DialogBoxIndirectParamW(nullptr, LoadResource(nullptr, resource), nullptr, rowsProcedure,
                                reinterpret_cast<LPARAM>(&made));
    });
    QWidget& dialog = await("Rows");
    EXPECT_TRUE(eventually([&] { return dialog.isActiveWindow(); }));
    return *dialog.findChild<QListView*>();
}

void Desktop::backUpAllFiles(const QString& comment)
{
    click(await(MainTitle), "Full backup");
    QWidget& dialog = await("Full Backup");
    type(dialog, comment);
    click(dialog, "All files");
    click(dialog, "OK");
    chooseStorage();
    awaitRest();
}

bool Desktop::listContains(const std::u16string& text) const
{
    const std::string bytes(reinterpret_cast<const char*>(text.data()), text.size() * sizeof(char16_t));
    return hostRead(sets() / "QLBX0001.QLT").find(bytes) != std::string::npos;
}
