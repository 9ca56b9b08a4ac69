#include "packetpane.h"

#include <QFontDatabase>
#include <QHeaderView>
#include <QLocale>
#include <QPlainTextEdit>
#include <QTreeView>

namespace {

constexpr int TEXT_ROLE = Qt::UserRole;
constexpr Qt::Alignment RIGHT = Qt::AlignRight | Qt::AlignVCenter;

}  // namespace

PacketPane::PacketPane(QWidget *parent)
    : QSplitter(Qt::Horizontal, parent), m_list(new QTreeView), m_text(new QPlainTextEdit)
{
    m_packets.setHorizontalHeaderLabels(
        { tr("Time"), tr("Direction"), tr("From and to"), tr("Content"), tr("Size") });
    m_packets.horizontalHeaderItem(Size)->setTextAlignment(RIGHT);
    m_list->setObjectName(QStringLiteral("packets"));
    m_list->setAccessibleName(tr("Packets"));
    m_list->setModel(&m_packets);
    m_list->setRootIsDecorated(false);
    m_list->setUniformRowHeights(true);
    m_list->setAlternatingRowColors(true);
    m_list->header()->setStretchLastSection(false);
    m_list->header()->setSectionResizeMode(Content, QHeaderView::Stretch);
    m_text->setObjectName(QStringLiteral("packetText"));
    m_text->setAccessibleName(tr("Text of the packet"));
    m_text->setReadOnly(true);
    m_text->setTabChangesFocus(true);
    m_text->setLineWrapMode(QPlainTextEdit::NoWrap);
    m_text->setPlaceholderText(tr("Choose a packet to read it."));
    m_text->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    connect(m_list->selectionModel(), &QItemSelectionModel::currentRowChanged, this,
        [this](const QModelIndex &row) {
            m_text->setPlainText(QString::fromUtf8(qUncompress(kept(row.row()))));
        });
    addWidget(m_list);
    addWidget(m_text);
}

void PacketPane::add(const PacketRecord &record)
{
    const QStringList texts { record.time, record.isSent ? tr("sent") : tr("received"),
        record.agents, record.content, QLocale().formattedDataSize(record.size) };
    QList<QStandardItem *> row;
    for (const QString &text : texts) {
        row << new QStandardItem(text);
        row.last()->setEditable(false);
        row.last()->setToolTip(text);
    }
    row[Size]->setTextAlignment(RIGHT);
    row[Time]->setData(record.text, TEXT_ROLE);
    m_packets.insertRow(0, row);
    m_kept += int(record.text.size());
    while (m_packets.rowCount() > MAX_PACKETS || m_kept > MAX_KEPT) {
        dropOldest();
    }
}

void PacketPane::dropOldest()
{
    const int oldest = m_packets.rowCount() - 1;
    m_kept -= int(kept(oldest).size());
    m_packets.removeRow(oldest);
    m_packets.horizontalHeaderItem(Content)->setText(
        tr("Content (the last %1 packets)").arg(oldest));
}

QByteArray PacketPane::kept(int row) const
{
    return m_packets.index(row, Time).data(TEXT_ROLE).toByteArray();
}
