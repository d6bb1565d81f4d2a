#include "pictures.h"

#include "resources/accessible_names.h"

#include <QBitmap>
#include <QFile>
#include <QImageReader>
#include <QPixmap>

#include <algorithm>
#include <array>

namespace platform::qt {

namespace {

struct Strip {
    WORD resource;
    const char* file;
    QSize cell;
};

constexpr std::array<Strip, 4> Strips{{
    {101, ":/pictures/tree.bmp", QSize(32, 15)},
    {106, ":/pictures/toolbar.bmp", QSize(16, 16)},
    {107, ":/pictures/band.bmp", QSize(16, 16)},
    {109, ":/pictures/quillbox.ico", QSize()},
}};

bool canDrawSvg()
{
    static const bool can = QImageReader::supportedImageFormats().contains("svg");
    return can;
}

// Returns the picture in the cell of the strip. If `strip.cell` is empty, the strip has no cells, and the whole file is
// the picture. Otherwise all pixels that have the colour of the strip's top left pixel are transparent.
QIcon cutFromStrip(const Strip& strip, int cell)
{
    if (strip.cell.isEmpty())
        return QIcon(QString::fromLatin1(strip.file));
    QPixmap whole(QString::fromLatin1(strip.file));
    const QImage image = whole.toImage();
    if (image.isNull())
        return {};
    whole.setMask(QBitmap::fromImage(image.createMaskFromColor(image.pixel(0, 0), Qt::MaskOutColor)));
    return QIcon(whole.copy(QRect(QPoint(cell * strip.cell.width(), 0), strip.cell)));
}

}  // namespace

QIcon pictureOf(WORD resource, int cell)
{
    const QString svg = QStringLiteral(":/pictures/svg/%1-%2.svg").arg(resource).arg(cell);
    if (canDrawSvg() && QFile::exists(svg))
        return QIcon(svg);
    const auto* const strip =
        std::find_if(Strips.begin(), Strips.end(), [&](const Strip& each) { return each.resource == resource; });
    return strip == Strips.end() ? QIcon() : cutFromStrip(*strip, cell);
}

QString pictureName(WORD resource, int cell)
{
    const std::u16string_view name = quillbox::accessibleName(resource, cell);
    return QString::fromUtf16(name.data(), static_cast<qsizetype>(name.size()));
}

QString pictureTip(WORD resource, int cell)
{
    const std::u16string_view tip = quillbox::tipOfPicture(resource, cell);
    return QString::fromUtf16(tip.data(), static_cast<qsizetype>(tip.size()));
}

}  // namespace platform::qt
