// desktop.h - the real program in its real windows, without a screen, and a user's hands and eyes for it.
#pragma once

#include "device/device.h"
#include "screen.h"

#include <gtest/gtest.h>

#include <QTemporaryDir>
#include <QWidget>

#include <atomic>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <thread>

// A fresh device with the content of a first start, and the program running on it.
class Desktop : public testing::Test {
protected:
    void SetUp() override;
    // Closes the program as a user would.
    void TearDown() override;

    // The window of that title, once it is there; a test that waits in vain fails.
    QWidget& await(const QString& title);
    [[nodiscard]] bool isThere(const QString& title) const;
    void awaitGone(const QString& title);
    // Does the program wait for its user, with no window over the main window?
    [[nodiscard]] static bool rests();
    void awaitRest();

    // What a user does once the window is in front and the program listens: what comes earlier would be dropped. Then
    // waits until the program has answered, by listening again or with another window in front.
    void act(QWidget& window, const std::function<void()>& input);
    // A mouse's click on the middle of the control of that name.
    void click(QWidget& window, const QString& name);
    void clickRow(QWidget& window, const QString& text);
    void type(QWidget& window, const QString& text);
    void press(QWidget& window, Qt::Key key, Qt::KeyboardModifiers modifiers = {});
    // Chooses a menu item by the keyboard: "Operations", "Backup", "Full...".
    void choose(const QStringList& path);

    // Ends the program before the screen draws another frame, as a wish to close that was kept does.
    void endBetweenFrames();

    // From the toolbar to the end of the run: all files, the comment as given, onto the storage card.
    void backUpAllFiles(const QString& comment);

    [[nodiscard]] std::filesystem::path store() const { return folder() / "object-store"; }
    [[nodiscard]] std::filesystem::path sets() const { return folder() / "cards" / "Storage Card" / "QUILBOX"; }
    [[nodiscard]] static std::string contentOf(const std::filesystem::path& file);

private:
    [[nodiscard]] std::filesystem::path folder() const
    {
        return std::filesystem::path(folder_.path().toStdString()) / "device";
    }

    QTemporaryDir folder_;
    std::unique_ptr<platform::device::Device> device_;
    std::optional<platform::qt::Screen> screen_;
    std::thread program_;
    std::atomic<bool> ended_ = false;
};

// What a person or a screen reader calls it.
[[nodiscard]] QString nameOf(const QWidget& widget);
// Null if the window shows no control of that name.
[[nodiscard]] QWidget* findControl(QWidget& window, const QString& name);
