#ifndef JOBWINDOW_H
#define JOBWINDOW_H

#include "rows.h"

#include <QWidget>

class Board;
class DetailPane;

/// A job in a window of its own. It follows what is read of the job later. Esc closes it.
class JobWindow : public QWidget
{
    Q_OBJECT

public:
    /// The item may be another one or empty; then the window waits until the job is read. Deletes
    /// itself when it is closed. The board is not owned and must outlive the window.
    JobWindow(const Board &board, const TQKEY_ELEMENT &key, const QString &name, const Item &item,
        QWidget *parent);

private:
    void take(const Item &item);

    const TQKEY_ELEMENT m_key;
    DetailPane *m_fields;  // child
};

#endif
