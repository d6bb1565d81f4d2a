// blocked_owner.h - keeps the user's input from the owner of a question, except for a request to close it.
//
// The toolkit's own modality would block that request too.
#pragma once

#include <QObject>
#include <QWidget>

#include <functional>

namespace platform::qt {

class BlockedOwner final : public QObject {
public:
    // Until it is destroyed. `closing` is called when the user asks to close the owner. The owner isn't closed.
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
