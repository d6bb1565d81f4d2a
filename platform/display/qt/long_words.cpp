// long_words.cpp - texts with words that are wider than a line.

#include "long_words.h"

#include <QRegularExpression>
#include <QTextBoundaryFinder>

namespace platform::qt {

namespace {

// A word that is wider than a fifth of the screen may be broken, at places a twentieth of it apart.
constexpr int LongWords = 5;
constexpr int Pieces = 20;

constexpr QChar MayBreak(u'\u200B');  // nothing of it is seen

// Between characters as a reader knows them.
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
