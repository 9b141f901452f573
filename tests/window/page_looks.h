#pragma once

#include "tests/window/looks.h"

// Shared by the tables of the four pages: header, footer and the grey buttons.

inline const QString kDark = "background-color: rgb(51, 52, 55);";
inline const QString kGrey = "background-color: rgb(191, 191, 191);";
inline const QString kField = "border: 2px groove white;";
inline const QString kWhite = "#ffffff";

/// The properties of a page's header and footer. `line` is the light line across the footer's top,
/// `notice` the maker's.
struct PageShape
{
    int width;
    int versionWidth;
    bool notice;
    bool line;
};

QList<Look> Header(const QWidget* page, const PageShape& shape);
QList<Look> Footer(const QWidget* page, const PageShape& shape);

/// A button of the bar above the footer. `slot`: for example "btnSlotBack()".
Look BarButton(const QWidget* page, const QString& text, const QRect& place, const QString& slot);

/// The two style sheets of the grey buttons, which differ only in white space: the one of the home
/// page's entries has seven tabs and two blanks, the other one eight and three.
QString GreyButtonStyle(const QString& gap);

/// Fails the running test with the differences.
void Expect(const QString& differences);
