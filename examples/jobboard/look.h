#ifndef LOOK_H
#define LOOK_H

/// The style that both looks are drawn in, with air between rows; the colours stay the platform's.
void setUpLook();
/// Whether windows are dark now.
bool isDarkLook();
/// Gives all windows light or dark colours.
void setDarkLook(bool dark);

#endif
