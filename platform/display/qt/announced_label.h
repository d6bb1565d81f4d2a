// announced_label.h - a label whose text a screen reader speaks when the label asks for it, wherever the focus is.
//
// The toolkit passes announcements to screen readers only since version 6.8. So the label is a notification for them,
// which they speak when it appears.
#pragma once

#include <QLabel>

namespace platform::qt {

class AnnouncedLabel final : public QLabel {
public:
    explicit AnnouncedLabel(QWidget* parent = nullptr);

    // Has the present text spoken.
    void announce();
};

}  // namespace platform::qt
