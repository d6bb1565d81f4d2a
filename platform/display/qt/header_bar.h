// header_bar.h - the caption of a dialog with an OK button in it: title, OK, close.
//
// The only place that knows how such a caption looks: a native title bar with a row of buttons below it would
// be another makeHeaderBar().
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
    // In the order in which Tab reaches them.
    [[nodiscard]] const std::vector<QAbstractButton*>& buttons() const { return buttons_; }

protected:
    void mousePressEvent(QMouseEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    QLabel* title_;
    std::vector<QAbstractButton*> buttons_;
};

// Takes the native frame off the dialog.
[[nodiscard]] HeaderBar* makeHeaderBar(QWidget* dialog, const std::function<void()>& ok,
                                       const std::function<void()>& close);

}  // namespace platform::qt
