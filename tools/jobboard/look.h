#ifndef LOOK_H
#define LOOK_H

/// The style of the light and the dark look, with more room between rows; the colours stay the
/// platform's.
void setUpLook();
/// Whether windows have dark colours now.
bool isDarkLook();
/// Gives all windows light or dark colours.
void setDarkLook(bool dark);

#endif
