// shown_text.h - converts texts of the window core to texts of the toolkit, and back.
#pragma once

#include <QFontMetrics>
#include <QString>

#include <string>

namespace platform::qt {

// These functions change nothing in the text. They are for texts that the user can edit.
QString toQtUnchanged(const std::u16string& text);
std::u16string fromQt(const QString& text);

// Converts a text for display. Escapes in the names of files are replaced by the characters that the names have on the
// host (the Linux system).
QString toQt(const std::u16string& text);

// Converts a text for display in one row. Control characters, such as a line break in a name, become visible
// characters.
QString toQtLine(const std::u16string& text);

// Returns the text with additional invisible characters at which a line may break. They are after each backslash, and
// within words that are long compared with `screenWidth` (in pixels). A name may be one long word, and the toolkit cuts
// off a word that it can't break.
QString breakable(const QString& text, const QFontMetrics& metrics, int screenWidth);

}  // namespace platform::qt
