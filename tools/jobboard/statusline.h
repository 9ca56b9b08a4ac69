#ifndef STATUSLINE_H
#define STATUSLINE_H

#include <QStatusBar>

class Board;
class JobModel;
class QLabel;
class QProgressBar;

/// How much is shown, how complete and how old it is, and how far loading is.
class StatusLine : public QStatusBar
{
    Q_OBJECT

public:
    /// Neither is owned; both must outlive the line.
    StatusLine(const Board &board, const JobModel &jobs, QWidget *parent);

    void update();
    QString text() const;

private:
    QString counts() const;
    QString age() const;

    const Board &m_board;
    const JobModel &m_jobs;
    QLabel *m_text;  // child
    QProgressBar *m_progress;  // child
};

#endif
