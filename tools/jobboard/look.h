#ifndef LOOK_H
#define LOOK_H

#include <QVariant>

QT_FORWARD_DECLARE_CLASS(QPalette)

/// What decides about light or dark colours.
enum class Theme { System, Light, Dark };

/// The style of all windows, with more room between rows.
void setUpLook();
/// Gives all windows the colours of the theme. With Theme::System call it again when the system's
/// theme has changed.
void setTheme(Theme theme);
/// Whether windows have dark colours now.
bool isDarkLook();
/// The colours of the light or the dark look.
QPalette paletteOf(bool isDark);
/// The colour that marks a state of jobs in the present look; invalid for one that is not known.
QVariant stateColour(int state);

#endif
