#include "pictures.h"
#include "view_makers.h"

#include "ce/controls.h"

#include <QLabel>
#include <QPainter>
#include <QTextLayout>

namespace platform::qt {

namespace {

using window::Change;
using window::WindowState;

// A line needs a few pixels more than the sum of its letters' widths.
constexpr int Slack = 3;
// A text wraps if the template gives it at least this height, in virtual pixels.
constexpr int TwoRows = 26;

// A label. A path can be one word without blanks, so a line breaks inside a word if necessary. If the text needs more
// rows than there are, an ellipsis replaces a part of the last row. QLabel itself can do neither.
class TextView final : public QLabel, public View {
public:
    TextView(const WindowState& state, const UserInput& input, QWidget* parent)
        : QLabel(parent), View(state.window, input)
    {
        setTextFormat(Qt::PlainText);
        wraps_ = state.rectangle.bottom - state.rectangle.top >= TwoRows;
        const DWORD kind = state.style & 0xF;
        setAlignment(Qt::AlignTop | (kind == SS_CENTER  ? Qt::AlignHCenter
                                     : kind == SS_RIGHT ? Qt::AlignRight
                                                        : Qt::AlignLeft));
    }

    using View::window;
    QWidget& widget() override { return *this; }

    void follow(const WindowState& state, Changes changes) override
    {
        if (changes.has(Change::Text))
            setText(toQt(state.text).replace(QStringLiteral("\r\n"), QStringLiteral("\n")));
    }

    int leastWidth() const override
    {
        int widest = 0;
        const QStringList lines = text().split(u'\n');
        for (const QString& line : lines)
            widest = std::max(widest, fontMetrics().horizontalAdvance(line));
        return wraps_ && lines.size() == 1 ? 0 : widest + Slack;
    }
    QRect geometryIn(const QRect& rect) const override
    {
        return {rect.topLeft(), QSize(rect.width(), std::max(rect.height(), fontMetrics().height()))};
    }
    int rowMiddle() const override { return wraps_ ? -1 : fontMetrics().height() / 2; }
    QString label() const override { return text(); }

protected:
    void paintEvent(QPaintEvent*) override
    {
        QPainter painter(this);
        painter.setPen(palette().color(isEnabled() ? QPalette::Active : QPalette::Disabled, QPalette::WindowText));
        const int spacing = fontMetrics().lineSpacing();
        int y = 0;
        for (const QString& paragraph : text().split(u'\n')) {
            QTextLayout layout(paragraph, font());
            QTextOption option(alignment());
            option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
            option.setTextDirection(layoutDirection());
            layout.setTextOption(option);
            layout.beginLayout();
            for (QTextLine line = layout.createLine(); line.isValid(); line = layout.createLine()) {
                line.setLineWidth(width());
                const bool last = y + 2 * spacing > height() + fontMetrics().descent();
                if (last && line.textStart() + line.textLength() < paragraph.size()) {
                    drawCut(painter, paragraph.mid(line.textStart()), y);
                    return;
                }
                line.draw(&painter, QPointF(0, y));
                y += spacing;
            }
            layout.endLayout();
        }
    }

private:
    bool wraps_ = false;

    // The ellipsis replaces the middle, because the end of a path is more important.
    void drawCut(QPainter& painter, const QString& rest, int y) const
    {
        const QString cut = fontMetrics().elidedText(rest, Qt::ElideMiddle, width());
        painter.drawText(QRect(0, y, width(), fontMetrics().height()), static_cast<int>(alignment()), cut);
    }
};

class IconView final : public QLabel, public View {
public:
    IconView(const WindowState& state, const UserInput& input, QWidget* parent)
        : QLabel(parent), View(state.window, input)
    {
        setAlignment(Qt::AlignCenter);
        setAccessibleName(parent->window()->windowTitle());
    }

    using View::window;
    QWidget& widget() override { return *this; }

    void follow(const WindowState& state, Changes) override { icon_ = pictureOf(state.iconId, 0); }

protected:
    void resizeEvent(QResizeEvent*) override
    {
        const int side = std::min(width(), height());
        setPixmap(icon_.pixmap(QSize(side, side), devicePixelRatioF()));
    }

private:
    QIcon icon_;
};

}  // namespace

View* makeStaticView(const WindowState& state, const UserInput& input, QWidget* parent)
{
    if ((state.style & 0xF) == SS_ICON)
        return new IconView(state, input, parent);
    return new TextView(state, input, parent);
}

}  // namespace platform::qt
