// announced_label.h - a label whose text a screen reader speaks on request, even if the focus is elsewhere.
//
// Versions of the toolkit before 6.8 can't pass announcements to screen readers. So the label presents itself to screen
// readers as a notification. A screen reader speaks a notification when it appears.
#pragma once

#include <QLabel>

namespace platform::qt {

class AnnouncedLabel final : public QLabel {
public:
    explicit AnnouncedLabel(QWidget* parent = nullptr);

    // Makes a screen reader speak the current text.
    void announce();
};

}  // namespace platform::qt
