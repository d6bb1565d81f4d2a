// readable_palette_test.cpp - colours with too little contrast are replaced, and other colours stay.
#include "readable_palette.h"

#include <gtest/gtest.h>

namespace platform::qt {
namespace {

QPalette colors(const QColor& surface, const QColor& text, const QColor& selection, const QColor& selected)
{
    QPalette palette(text, surface, surface, surface, surface, text, text, surface, surface);
    palette.setColor(QPalette::Highlight, selection);
    palette.setColor(QPalette::HighlightedText, selected);
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        palette.setColor(QPalette::Disabled, role, surface);
    return palette;
}

TEST(ReadablePaletteTest, SelectionsAndDisabledTextsCanBeSeenAndGoodColoursStay)
{
    const QColor yellow(255, 255, 0);
    for (QPalette palette : {colors(Qt::white, Qt::black, QColor(48, 140, 198), Qt::white),
                             colors(Qt::black, Qt::white, yellow, Qt::black),
                             colors(Qt::black, Qt::white, QColor(60, 60, 60), Qt::black)}) {
        const QColor before = palette.color(QPalette::Highlight);
        makeReadable(palette);
        const QColor selection = palette.color(QPalette::Highlight);
        EXPECT_GE(contrast(selection, palette.color(QPalette::HighlightedText)), 4.5);
        EXPECT_EQ(selection == before, before == yellow);
        for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
            EXPECT_GE(contrast(palette.color(QPalette::Disabled, role), palette.color(QPalette::Window)), 3);
        EXPECT_GE(contrast(lineColor(palette), palette.color(QPalette::Window)), 3);
    }
}

}  // namespace
}  // namespace platform::qt
