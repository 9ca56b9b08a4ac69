#ifndef PACKETPANE_H
#define PACKETPANE_H

#include "rows.h"

#include <QSplitter>
#include <QStandardItemModel>

class QPlainTextEdit;
class QTreeView;

/// The packets that the agents sent and received, newest first, and the text of the selected one.
/// Old ones are dropped; the heading then says so.
class PacketPane : public QSplitter
{
    Q_OBJECT

public:
    static constexpr int MAX_PACKETS = 500;
    static constexpr int MAX_KEPT = 8 << 20;  ///< bytes kept of all, compressed

    explicit PacketPane(QWidget *parent);

    void add(const PacketRecord &record);

private:
    enum Column { Time, Way, Agents, Content, Size };

    QByteArray kept(int row) const;
    void dropOldest();

    QStandardItemModel m_packets;
    int m_kept = 0;  // bytes of all texts, compressed
    QTreeView *m_list;  // child
    QPlainTextEdit *m_text;  // child
};

#endif
