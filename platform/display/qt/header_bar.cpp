#include "header_bar.h"

#include "readable_palette.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QMouseEvent>
#include <QPainter>
#include <QPushButton>
#include <QWindow>

#include <algorithm>

namespace platform::qt {

namespace {

// Draws the cross itself, in the colour of texts. The style's picture of a cross is a small bitmap with its own
// colours, and doesn't grow with the font.
class CloseButton final : public QPushButton {
public:
    explicit CloseButton(QWidget* parent) : QPushButton(parent)
    {
        setAccessibleName(tr("Cancel"));
        setToolTip(tr("Cancel"));
    }

    QSize sizeHint() const override
    {
        const int side = QPushButton::sizeHint().height();
        return {side, side};
    }

protected:
    void paintEvent(QPaintEvent* event) override
    {
        QPushButton::paintEvent(event);
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        const double arm = fontMetrics().xHeight() * 0.55;
        const QPointF middle = QRectF(rect()).center();
        painter.setPen(
            QPen(palette().color(QPalette::ButtonText), std::max(1.4, arm / 3), Qt::SolidLine, Qt::RoundCap));
        painter.drawLine(middle + QPointF(-arm, -arm), middle + QPointF(arm, arm));
        painter.drawLine(middle + QPointF(-arm, arm), middle + QPointF(arm, -arm));
    }
};

void setUp(QPushButton& button, const std::function<void()>& pressed)
{
    button.setAutoDefault(false);
    button.setFocusPolicy(Qt::TabFocus);
    QObject::connect(&button, &QPushButton::clicked, &button, pressed);
}

}  // namespace

HeaderBar::HeaderBar(QWidget* parent, const std::function<void()>& ok, const std::function<void()>& close)
    : QWidget(parent), title_(new QLabel(this))
{
    auto* okButton = new QPushButton(tr("OK"), this);
    auto* closeButton = new CloseButton(this);
    setUp(*okButton, ok);
    setUp(*closeButton, close);
    buttons_ = {okButton, closeButton};

    QFont bold = font();
    bold.setBold(true);
    title_->setFont(bold);
    title_->setTextFormat(Qt::PlainText);

    const int gap = fontMetrics().horizontalAdvance(u'0');
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(gap + gap / 2, gap / 2, gap / 2, gap / 2);
    row->setSpacing(gap / 2);
    row->addWidget(title_, 1);
    row->addWidget(okButton);
    row->addWidget(closeButton);
}

void HeaderBar::setTitle(const QString& title)
{
    title_->setText(title);
}

void HeaderBar::mousePressEvent(QMouseEvent* event)
{
    if (event->button() == Qt::LeftButton && window()->windowHandle())
        window()->windowHandle()->startSystemMove();
}

void HeaderBar::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.fillRect(rect(), palette().color(QPalette::Button));
    painter.setPen(lineColor(palette()));
    painter.drawLine(QPointF(0, height() - 0.5), QPointF(width(), height() - 0.5));
}

HeaderBar* makeHeaderBar(QWidget* dialog, const std::function<void()>& ok, const std::function<void()>& close)
{
    dialog->setWindowFlags(Qt::Dialog | Qt::FramelessWindowHint);
    return new HeaderBar(dialog, ok, close);
}

}  // namespace platform::qt
