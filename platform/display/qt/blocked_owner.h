// blocked_owner.h - blocks the user's input to the owner window of a question, except a request to close the owner.
//
// A modal window of the toolkit would block that request too.
#pragma once

#include <QObject>
#include <QWidget>

#include <functional>

namespace platform::qt {

class BlockedOwner final : public QObject {
public:
    // Blocks the owner until this object is destroyed. `closing` is called when the user asks to close the owner. The
    // request itself doesn't close the owner.
    BlockedOwner(QWidget& owner, QWidget& question, std::function<void()> closing);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    bool isInOwner(QObject* object) const;
    void showQuestion();

    QWidget& owner_;
    QWidget& question_;
    std::function<void()> closing_;
};

}  // namespace platform::qt
