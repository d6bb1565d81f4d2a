// desktop.cpp - the real program in its real windows, and a user's hands and eyes for it.

#include "desktop.h"

#include "resource/resource_file.h"
#include "resources/embedded_resources.h"

#include "ce/window.h"
#include "ce/winmain.h"

#include <QAbstractButton>
#include <QApplication>
#include <QLabel>
#include <QListView>
#include <QMenu>
#include <QMenuBar>
#include <QtTest/QTest>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace {

// Long enough for a run under a sanitizer on a busy machine; nothing waits for it when all is well.
constexpr int Patience = 60000;

QWidget* findWindow(const QString& title)
{
    for (QWidget* window : QApplication::topLevelWidgets())
        if (window->isVisible() && window->windowTitle() == title && !qobject_cast<QMenu*>(window))
            return window;
    return nullptr;
}

// Of the core's windows that are shown; null if there is none.
HWND frontWindow()
{
    for (const HWND window : platform::window::topLevelWindows()) {
        platform::window::WindowState state;
        if (platform::window::readWindow(window, state) && state.visible)
            return window;
    }
    return nullptr;
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
    for (QWidget* child : window.findChildren<QWidget*>())
        if (child->isVisible() && !qobject_cast<QLabel*>(child) && nameOf(*child) == name)
            return child;
    return nullptr;
}

void Desktop::SetUp()
{
    ASSERT_TRUE(platform::resource::setResources(quillbox::embeddedResources()));
    auto opened = platform::device::openDevice(folder(), {}, true);
    ASSERT_TRUE(opened.device) << opened.error.sentence;
    device_ = std::move(opened.device);
    screen_.emplace();
    program_ = std::thread([this] {
        WCHAR none[] = u"";
        WinMain(reinterpret_cast<HINSTANCE>(UINT_PTR{1}), nullptr, none, SW_SHOW);
        ended_ = true;
    });
    // The desktop gives it the keyboard later than it shows it, and would take that from a dialog.
    const QWidget& main = await("KORV Quillbox");
    ASSERT_TRUE(QTest::qWaitFor([&] { return main.isActiveWindow(); }, Patience));
}

void Desktop::TearDown()
{
    // What a failed test has left open goes first.
    const auto closeAll = [this] {
        if (QWidget* modal = QApplication::activeModalWidget())
            modal->close();
        else if (QWidget* main = findWindow("KORV Quillbox"))
            main->close();
        return ended_.load();
    };
    EXPECT_TRUE(QTest::qWaitFor(closeAll, Patience));
    if (program_.joinable())
        program_.join();
    screen_.reset();
    device_.reset();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

QWidget& Desktop::await(const QString& title)
{
    if (!QTest::qWaitFor([&] { return findWindow(title) != nullptr; }, Patience))
        throw std::runtime_error("no window \"" + title.toStdString() + "\"");
    return *findWindow(title);
}

bool Desktop::isThere(const QString& title) const
{
    return findWindow(title) != nullptr;
}

void Desktop::awaitGone(const QString& title)
{
    EXPECT_TRUE(QTest::qWaitFor([&] { return !isThere(title); }, Patience)) << title.toStdString();
}

bool Desktop::rests()
{
    const auto windows = platform::window::topLevelWindows();
    return windows.size() == 1 && platform::window::takesInput(windows.front());
}

void Desktop::awaitRest()
{
    EXPECT_TRUE(QTest::qWaitFor(rests, Patience));
    screen_->flush();
}

void Desktop::endBetweenFrames()
{
    ASSERT_TRUE(platform::window::postClose(platform::window::topLevelWindows().front()));
    program_.join();
    screen_.reset();
}

void Desktop::act(QWidget& window, const std::function<void()>& input)
{
    const QString title = window.windowTitle();
    HWND front = nullptr;
    const auto listens = [&] {
        platform::window::WindowState state;
        front = frontWindow();
        if (!front || !platform::window::readWindow(front, state) || QString::fromStdU16String(state.text) != title ||
            !platform::window::takesInput(front))
            return false;
        // No window manager does it here when the one in front has gone.
        if (!window.isActiveWindow())
            window.activateWindow();
        return window.isActiveWindow();
    };
    const auto require = [&](const std::function<bool()>& isSo) {
        if (!QTest::qWaitFor(isSo, Patience))
            throw std::runtime_error("the program hears nothing in \"" + title.toStdString() + "\"");
        screen_->flush();
    };
    require(listens);
    input();
    const auto answered = [&] { return frontWindow() != front || platform::window::takesInput(front); };
    require(answered);
}

void Desktop::click(QWidget& window, const QString& name)
{
    act(window, [&] {
        QWidget* control = findControl(window, name);
        ASSERT_TRUE(control) << name.toStdString();
        // Check boxes are wider than their text: near the left edge is always inside.
        QTest::mouseClick(control, Qt::LeftButton, {}, QPoint(8, control->height() / 2));
    });
}

void Desktop::clickRow(QWidget& window, const QString& text)
{
    auto* list = window.findChild<QListView*>();
    ASSERT_TRUE(list);
    act(window, [&] {
        const QModelIndexList found = list->model()->match(list->model()->index(0, 0), Qt::DisplayRole, text, 1,
                                                           Qt::MatchExactly | Qt::MatchCaseSensitive);
        ASSERT_FALSE(found.empty()) << "no row " << text.toStdString();
        list->scrollTo(found.front());
        QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, list->visualRect(found.front()).center());
    });
}

void Desktop::type(QWidget& window, const QString& text)
{
    for (const QChar letter : text)
        act(window, [&] {
            ASSERT_TRUE(window.focusWidget());
            QTest::keyClicks(window.focusWidget(), QString(letter));
        });
}

void Desktop::press(QWidget& window, Qt::Key key, Qt::KeyboardModifiers modifiers)
{
    act(window, [&] { QTest::keyClick(window.focusWidget() ? window.focusWidget() : &window, key, modifiers); });
}

void Desktop::choose(const QStringList& path)
{
    QWidget& main = await("KORV Quillbox");
    act(main, [&] {
        QWidget* level = main.findChild<QMenuBar*>();
        QAction* wanted = nullptr;
        for (const QString& text : path) {
            const QList<QAction*> actions = level->actions();
            const auto found = std::ranges::find_if(
                actions, [&](const QAction* action) { return action->text().remove(u'&') == text; });
            ASSERT_NE(found, actions.end()) << text.toStdString();
            wanted = *found;
            level = wanted->menu();
        }
        wanted->trigger();
    });
}

void Desktop::backUpAllFiles(const QString& comment)
{
    click(await("KORV Quillbox"), "Full backup");
    QWidget& dialog = await("Full Backup");
    type(dialog, comment);
    click(dialog, "All files");
    click(dialog, "OK");
    QWidget& chooser = await("Select");
    clickRow(chooser, "\\Storage Card");
    click(chooser, "OK");
}

std::string Desktop::contentOf(const std::filesystem::path& file)
{
    std::ifstream in(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}
