// long_words.h - texts with words that are wider than a line.
#pragma once

#include <QFontMetrics>
#include <QString>

namespace platform::qt {

// The text with places, invisible, where a line may break: behind each backslash, and within words that are wide
// for a screen of so many pixels. A name may be one word of any length, and the toolkit cuts off what it can't
// break.
[[nodiscard]] QString breakable(const QString& text, const QFontMetrics& metrics, int screenWidth);

}  // namespace platform::qt
