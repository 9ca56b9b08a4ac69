#ifndef PACKETPANE_H
#define PACKETPANE_H

#include <QSplitter>

class PacketLog;
class QPlainTextEdit;
class QTreeView;

/// The packets of a log, and the text of the selected one.
class PacketPane : public QSplitter
{
    Q_OBJECT

public:
    /// The log is not owned and must outlive the pane.
    PacketPane(PacketLog &log, QWidget *parent);

private:
    PacketLog &m_log;
    QTreeView *m_list;  // child
    QPlainTextEdit *m_text;  // child
};

#endif
