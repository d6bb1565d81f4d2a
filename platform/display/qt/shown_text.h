// shown_text.h - texts of the window core as the toolkit shows them, and back.
#pragma once

#include <QFontMetrics>
#include <QString>

#include <string>

namespace platform::qt {

// Without any change: for texts that the user can edit.
QString toQtUnchanged(const std::u16string& text);
std::u16string fromQt(const QString& text);

// For display: names as on the host.
QString toQt(const std::u16string& text);

// For display in one row: control characters, such as a line break in a name, become visible characters.
QString toQtLine(const std::u16string& text);

// The text with invisible characters where a line may break: after each backslash, and within words that are long
// compared with `screenWidth` (pixels). The toolkit cuts off what it can't break, and a name may be one long word.
QString breakable(const QString& text, const QFontMetrics& metrics, int screenWidth);

}  // namespace platform::qt
