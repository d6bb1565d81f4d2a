#include "plain_style.h"

#include "readable_palette.h"

#include <QApplication>
#include <QPainter>
#include <QProxyStyle>
#include <QStyleOption>
#include <QWidget>

#include <algorithm>

namespace platform::qt {

namespace {

// The toolkit's style makes the palette's window colour darker by this factor, in percent, and draws its lines in the
// darker colour. withVisibleLines() makes the intended colour of the lines lighter by the same factor, and puts it into
// the palette as the window colour. The style then draws the lines in the intended colour.
constexpr int Darkening = 140;
// The smallest side of a check box's square and the smallest diameter of a radio button's circle, as a fraction of the
// font's height.
constexpr double BoxHeight = 0.75;

template <class Option>
Option withVisibleLines(const Option& option)
{
    Option visible(option);
    visible.palette.setColor(QPalette::Window, lineColor(option.palette).lighter(Darkening));
    return visible;
}

// Draws the arrow of a selected row in the colour of selected texts. The toolkit's style would draw the arrow in the
// colour for unselected rows, and half transparent.
void drawExpander(QPainter& painter, const QStyleOption& option)
{
    if (!option.state.testFlag(QStyle::State_Children))
        return;
    const double arm = option.fontMetrics.xHeight() * 0.5;
    const QPolygonF arrow{QPointF(-arm / 2, -arm), QPointF(arm / 2, 0), QPointF(-arm / 2, arm)};
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.translate(QRectF(option.rect).center());
    if (option.state.testFlag(QStyle::State_Open))
        painter.rotate(90);
    else if (option.direction == Qt::RightToLeft)
        painter.rotate(180);
    painter.setPen(Qt::NoPen);
    painter.setBrush(option.palette.color(QPalette::HighlightedText));
    painter.drawPolygon(arrow);
    painter.restore();
}

class PlainStyle final : public QProxyStyle {
public:
    using QProxyStyle::polish;
    void polish(QPalette& palette) override
    {
        QProxyStyle::polish(palette);
        makeReadable(palette);
    }

    void drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                       const QWidget* widget) const override
    {
        if (const auto* frame = qstyleoption_cast<const QStyleOptionFrame*>(option);
            frame && element == PE_FrameLineEdit) {
            const QStyleOptionFrame visible = withVisibleLines(*frame);
            QProxyStyle::drawPrimitive(element, &visible, painter, widget);
            return;
        }
        if (const auto* button = qstyleoption_cast<const QStyleOptionButton*>(option);
            button && (element == PE_IndicatorCheckBox || element == PE_IndicatorRadioButton)) {
            const QStyleOptionButton visible = withVisibleLines(*button);
            QProxyStyle::drawPrimitive(element, &visible, painter, widget);
            return;
        }
        if (element == PE_Frame) {
            drawOutline(*painter, option->rect, lineColor(option->palette));
            return;
        }
        if (element == PE_IndicatorBranch && option->state.testFlag(State_Selected)) {
            drawExpander(*painter, *option);
            return;
        }
        if (element == PE_PanelMenu) {
            const QStyleOption visible = withVisibleLines(*option);
            QProxyStyle::drawPrimitive(element, &visible, painter, widget);
            return;
        }
        QProxyStyle::drawPrimitive(element, option, painter, widget);
    }

    void drawControl(ControlElement element, const QStyleOption* option, QPainter* painter,
                     const QWidget* widget) const override
    {
        if (const auto* bar = qstyleoption_cast<const QStyleOptionProgressBar*>(option);
            bar && element == CE_ProgressBarGroove) {
            const QStyleOptionProgressBar visible = withVisibleLines(*bar);
            QProxyStyle::drawControl(element, &visible, painter, widget);
            return;
        }
        QProxyStyle::drawControl(element, option, painter, widget);
    }

    void drawComplexControl(ComplexControl control, const QStyleOptionComplex* option, QPainter* painter,
                            const QWidget* widget) const override
    {
        if (const auto* spin = qstyleoption_cast<const QStyleOptionSpinBox*>(option)) {
            const QStyleOptionSpinBox visible = withVisibleLines(*spin);
            QProxyStyle::drawComplexControl(control, &visible, painter, widget);
        } else if (const auto* box = qstyleoption_cast<const QStyleOptionComboBox*>(option)) {
            const QStyleOptionComboBox visible = withVisibleLines(*box);
            QProxyStyle::drawComplexControl(control, &visible, painter, widget);
        } else {
            QProxyStyle::drawComplexControl(control, option, painter, widget);
        }
    }

    int pixelMetric(PixelMetric metric, const QStyleOption* option, const QWidget* widget) const override
    {
        const int usual = QProxyStyle::pixelMetric(metric, option, widget);
        switch (metric) {
        case PM_IndicatorWidth:
        case PM_IndicatorHeight:
        case PM_ExclusiveIndicatorWidth:
        case PM_ExclusiveIndicatorHeight:
            return widget ? std::max(usual, qRound(BoxHeight * widget->fontMetrics().height())) : usual;
        default:
            return usual;
        }
    }
};

}  // namespace

void drawOutline(QPainter& painter, const QRect& rect, const QColor& color)
{
    painter.fillRect(rect.x(), rect.y(), rect.width(), 1, color);
    painter.fillRect(rect.x(), rect.bottom(), rect.width(), 1, color);
    painter.fillRect(rect.x(), rect.y(), 1, rect.height(), color);
    painter.fillRect(rect.right(), rect.y(), 1, rect.height(), color);
}

void usePlainStyle()
{
    if (QApplication::style()->name() == QLatin1String("fusion"))
        QApplication::setStyle(new PlainStyle);
}

}  // namespace platform::qt
