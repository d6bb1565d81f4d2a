#include "shown_text.h"

#include "text/host_name.h"

#include <QRegularExpression>
#include <QTextBoundaryFinder>

namespace platform::qt {

namespace {

// If a word is wider than a fifth of the screen, it may break after each twentieth of the screen's width.
constexpr int LongWords = 5;
constexpr int Pieces = 20;

constexpr QChar MayBreak(u'\u200B');  // zero width space

// Inserts MayBreak into the word, so that no piece is wider than `widest`. The breaks are only between grapheme
// clusters, so that a letter isn't separated from its accents.
QString inPieces(const QString& word, const QFontMetrics& metrics, int widest)
{
    QTextBoundaryFinder boundaries(QTextBoundaryFinder::Grapheme, word);
    QString broken;
    int width = 0;
    for (qsizetype begin = 0; begin < word.size(); begin = boundaries.position()) {
        const QString character = word.mid(begin, boundaries.toNextBoundary() - begin);
        const int more = metrics.horizontalAdvance(character);
        if (width + more > widest) {
            broken += MayBreak;
            width = 0;
        }
        width += more;
        broken += character;
    }
    return broken;
}

}  // namespace

QString toQtUnchanged(const std::u16string& text)
{
    return QString::fromStdU16String(text);
}

std::u16string fromQt(const QString& text)
{
    return text.toStdU16String();
}

QString toQt(const std::u16string& text)
{
    return toQtUnchanged(platform::text::toShown(text));
}

QString toQtLine(const std::u16string& text)
{
    constexpr char16_t ControlPictures = 0x2400;
    QString line = toQt(text);
    for (QChar& character : line) {
        if (character < u' ')
            character = QChar(static_cast<char16_t>(ControlPictures + character.unicode()));
    }
    return line;
}

QString breakable(const QString& text, const QFontMetrics& metrics, int screenWidth)
{
    static const QRegularExpression ends(QStringLiteral("[\\\\\\s]"));
    QString broken;
    for (qsizetype begin = 0, end = 0; begin < text.size(); begin = end) {
        end = text.indexOf(ends, begin) + 1;
        if (end == 0)
            end = text.size();
        const QString word = text.mid(begin, end - begin);
        const bool isLong = metrics.horizontalAdvance(word) > screenWidth / LongWords;
        broken += isLong ? inPieces(word, metrics, screenWidth / Pieces) : word;
        if (word.endsWith(u'\\'))
            broken += MayBreak;
    }
    return broken;
}

}  // namespace platform::qt
