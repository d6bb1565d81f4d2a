#include "announced_label.h"

#include <QAccessible>
#include <QAccessibleWidget>

namespace platform::qt {

namespace {

class LabelAccessible final : public QAccessibleWidget {
public:
    explicit LabelAccessible(AnnouncedLabel* label)
        : QAccessibleWidget(label, QAccessible::Notification), label_(*label)
    {
    }

    QString text(QAccessible::Text text) const override
    {
        return text == QAccessible::Name ? label_.text() : QAccessibleWidget::text(text);
    }

private:
    AnnouncedLabel& label_;
};

QAccessibleInterface* makeAccessible(const QString&, QObject* object)
{
    auto* label = dynamic_cast<AnnouncedLabel*>(object);
    return label ? new LabelAccessible(label) : nullptr;
}

}  // namespace

AnnouncedLabel::AnnouncedLabel(QWidget* parent) : QLabel(parent)
{
    QAccessible::installFactory(makeAccessible);
}

void AnnouncedLabel::announce()
{
    QAccessibleEvent appears(this, QAccessible::ObjectShow);
    QAccessible::updateAccessibility(&appears);
}

}  // namespace platform::qt
