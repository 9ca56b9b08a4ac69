#ifndef COLUMNROOM_H
#define COLUMNROOM_H

class QHeaderView;

/// Gives a column the room that the others leave, but at least a minimum. If that does not fit, the
/// view scrolls.
void takeRoom(QHeaderView *header, int column, int minimum);

#endif
