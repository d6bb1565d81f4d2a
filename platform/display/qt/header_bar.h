// header_bar.h - shows a dialog's caption, which contains the title, an OK button and a close button. This caption
// replaces the window manager's frame, which can't have an OK button. Only dialogs with WS_EX_CAPTIONOKBTN get it.
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
    // Returns the buttons OK and close, in the order in which Tab reaches them.
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
