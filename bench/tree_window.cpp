// tree_window.cpp - measures the time and memory of the tree in the window.
//
//     quillbox-bench-tree-window DEVICE TOP-FOLDER
//
// Opens the real window on the device. Expands "Files" and the folder TOP-FOLDER in the device's root, scrolls through
// its items, marks all of them, and collapses the folder. Prints one line for each figure: its name and its value.
//
// A time is measured from the click until the first picture with the result has been painted.
#include "device/device.h"
#include "resource/resource_file.h"
#include "resources/embedded_resources.h"
#include "screen.h"

#include "ce/window.h"
#include "ce/winmain.h"

#include <QAbstractButton>
#include <QApplication>
#include <QEventLoop>
#include <QMouseEvent>
#include <QScrollBar>
#include <QTreeView>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <fstream>
#include <functional>
#include <string>
#include <thread>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;

double millisecondsSince(Clock::time_point start)
{
    return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

void waitFor(const std::function<bool()>& holds)
{
    while (!holds())
        QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents);
}

// Waits until the program accepts input. The program drops input while it is busy.
void awaitRest()
{
    const auto rests = [] {
        const auto windows = platform::window::topLevelWindows();
        return windows.size() == 1 && platform::window::takesInput(windows.front());
    };
    while (!rests()) {
        QCoreApplication::processEvents();
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
}

// Current resident memory in kilobytes.
long residentKilobytes()
{
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);)
        if (line.starts_with("VmRSS:"))
            return std::strtol(line.c_str() + 6, nullptr, 10);
    return 0;
}

// Uses the tree view as a user does: clicks on items, and waits until a state has been painted.
class TreeOnScreen final : public QObject {
public:
    explicit TreeOnScreen(QTreeView& view) : view_(view) { view.viewport()->installEventFilter(this); }

    [[nodiscard]] QModelIndex item(const QString& text, const QModelIndex& above = {}) const
    {
        for (int row = 0; row < view_.model()->rowCount(above); ++row)
            if (const QModelIndex at = view_.model()->index(row, 0, above); at.data().toString() == text)
                return at;
        return {};
    }

    void awaitPainted(const std::function<bool()>& holds)
    {
        wanted_ = holds;
        painted_ = false;
        view_.viewport()->update();
        waitFor([this] { return painted_; });
    }

    void click(const QModelIndex& index, bool onButton)
    {
        const QRect row = view_.visualRect(index);
        const int x = row.left() + (onButton ? -view_.indentation() / 2 : view_.iconSize().width() + 10);
        const QPointF point(x, row.center().y());
        QMouseEvent press(QEvent::MouseButtonPress, point, view_.viewport()->mapToGlobal(point), Qt::LeftButton,
                          Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(view_.viewport(), &press);
    }

    bool eventFilter(QObject*, QEvent* event) override
    {
        if (event->type() == QEvent::Paint && !painted_ && wanted_ && wanted_()) {
            wanted_ = nullptr;
            // The call is queued, so it runs after the painting.
            QMetaObject::invokeMethod(
                this, [this] { painted_ = true; }, Qt::QueuedConnection);
        }
        return false;
    }

private:
    QTreeView& view_;
    std::function<bool()> wanted_;
    bool painted_ = false;
};

QWidget* mainWindow()
{
    for (QWidget* window : QApplication::topLevelWidgets())
        if (window->isVisible() && window->findChild<QTreeView*>())
            return window;
    return nullptr;
}

void pressTool(QWidget& window, const QString& name)
{
    for (auto* button : window.findChildren<QAbstractButton*>())
        if (button->accessibleName() == name || button->text().remove(u'&') == name)
            button->click();
}

void measureScrolling(QTreeView& view)
{
    std::vector<double> frames;
    QScrollBar& bar = *view.verticalScrollBar();
    for (int step = 0; step < 200; ++step) {
        const auto start = Clock::now();
        bar.setValue(static_cast<int>(static_cast<long>(bar.maximum()) * (step * 37 % 200) / 200));
        view.viewport()->repaint();
        frames.push_back(millisecondsSince(start));
    }
    std::ranges::sort(frames);
    bar.setValue(0);
    std::printf("scroll-median %.2f\nscroll-worst %.2f\n", frames[frames.size() / 2], frames.back());
}

void measure(QWidget& window, const QString& folder)
{
    auto& view = *window.findChild<QTreeView*>();
    TreeOnScreen tree(view);
    waitFor([&] { return tree.item("Files").isValid(); });
    awaitRest();
    tree.click(tree.item("Files"), true);
    waitFor([&] { return tree.item(folder, tree.item("Files")).isValid(); });
    const QModelIndex parent = tree.item(folder, tree.item("Files"));
    const auto child = [&] { return view.model()->index(0, 0, parent); };
    tree.awaitPainted([&] { return view.visualRect(parent).isValid(); });
    const long before = residentKilobytes();

    awaitRest();
    auto start = Clock::now();
    tree.click(parent, true);
    tree.awaitPainted([&] { return view.isExpanded(parent) && view.visualRect(child()).isValid(); });
    std::printf("expand %.1f\n", millisecondsSince(start));
    const int items = view.model()->rowCount(parent);
    std::printf("items %d\nexpand-kilobytes %ld\n", items, residentKilobytes() - before);
    measureScrolling(view);

    awaitRest();
    tree.click(parent, false);
    awaitRest();
    start = Clock::now();
    pressTool(window, "Mark");
    tree.awaitPainted([&] { return child().data(Qt::CheckStateRole).toInt() != Qt::Unchecked; });
    std::printf("mark %.1f\nmark-kilobytes %ld\n", millisecondsSince(start), residentKilobytes() - before);

    awaitRest();
    start = Clock::now();
    tree.click(parent, true);
    tree.awaitPainted([&] { return !view.isExpanded(parent) && view.model()->rowCount(parent) == 0; });
    std::printf("collapse %.1f\n", millisecondsSince(start));
}

}  // namespace

int main(int count, char** words)
{
    if (count != 3) {
        std::fputs("usage: quillbox-bench-tree-window DEVICE TOP-FOLDER\n", stderr);
        return 2;
    }
    const auto opened = platform::device::openDevice(words[1], {}, false);
    if (!opened.device || !platform::resource::setResources(quillbox::embeddedResources())) {
        std::fprintf(stderr, "quillbox-bench-tree-window: %s\n", opened.error.sentence.c_str());
        return 1;
    }
    QApplication application(count, words);
    QApplication::setQuitOnLastWindowClosed(false);
    platform::qt::Screen screen;
    std::atomic<bool> ended = false;
    std::thread program([&] {
        WCHAR none[] = u"";
        WinMain(reinterpret_cast<HINSTANCE>(UINT_PTR{1}), nullptr, none, SW_SHOW);
        ended = true;
        QMetaObject::invokeMethod(
            &application, [] {}, Qt::QueuedConnection);  // an event that wakes waitFor()
    });
    waitFor([] { return mainWindow() != nullptr; });
    measure(*mainWindow(), QString::fromUtf8(words[2]));
    awaitRest();
    mainWindow()->close();
    waitFor([&] { return ended.load(); });
    program.join();
    return 0;
}
