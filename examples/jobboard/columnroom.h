#ifndef COLUMNROOM_H
#define COLUMNROOM_H

class QHeaderView;

/// Has a column take the room that the others leave, but never less than a minimum: where that is
/// too much, the view scrolls.
void takeRoom(QHeaderView *header, int column, int minimum);

#endif
