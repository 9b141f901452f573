#pragma once

#include "tests/window/looks.h"

// What the tables of the four pages share: the strip at the top, the one at the bottom, the grey
// buttons.

inline const QString kDark = "background-color: rgb(51, 52, 55);";
inline const QString kGrey = "background-color: rgb(191, 191, 191);";
inline const QString kField = "border: 2px groove white;";
inline const QString kWhite = "#ffffff";

/// Where a page's header and footer differ from the others'. The line is the light one across the
/// footer's top, the notice the maker's.
struct PageShape
{
    int width;
    int versionWidth;
    bool notice;
    bool line;
};

QList<Look> Header(const QWidget* page, const PageShape& shape);
QList<Look> Footer(const QWidget* page, const PageShape& shape);

/// A button of the bar above the footer; `slot` such as "btnSlotBack()".
Look BarButton(const QWidget* page, const QString& text, const QRect& place, const QString& slot);

/// The style of the grey buttons, of which there are two, alike but for this white space: the home
/// page's entries have seven tabs and two blanks, all others eight and three.
QString GreyButtonStyle(const QString& gap);

/// Fails the running test with what is different.
void Expect(const QString& differences);
