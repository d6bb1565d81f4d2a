// header_bar.h - the caption of a dialog with an OK button in it: title, OK, close. It replaces the frame of the window
// manager, which can't have such a button.
#pragma once

#include <QString>
#include <QWidget>

#include <functional>
#include <vector>

class QAbstractButton;
class QLabel;

namespace platform::qt {

class HeaderBar final : public QWidget {
public:
    HeaderBar(QWidget* parent, const std::function<void()>& ok, const std::function<void()>& close);

    void setTitle(const QString& title);
    // In the order of Tab: OK, close.
    const std::vector<QAbstractButton*>& buttons() const { return buttons_; }

protected:
    void mousePressEvent(QMouseEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    QLabel* title_;
    std::vector<QAbstractButton*> buttons_;
};

// Makes the bar of a dialog, and removes the window manager's frame from the dialog.
HeaderBar* makeHeaderBar(QWidget* dialog, const std::function<void()>& ok, const std::function<void()>& close);

}  // namespace platform::qt
