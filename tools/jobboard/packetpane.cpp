#include "packetpane.h"

#include "columnroom.h"
#include "packetlog.h"
#include "wholerows.h"

#include <QFontDatabase>
#include <QHeaderView>
#include <QPlainTextEdit>
#include <QTreeView>

namespace {

// Has margins left and right only, so that lines fill its whole height.
class Lines : public QPlainTextEdit
{
public:
    Lines()
    {
        document()->setDocumentMargin(0);
        setViewportMargins(MARGIN, MARGIN, 0, 0);
    }

private:
    static constexpr int MARGIN = 4;
};

}  // namespace

PacketPane::PacketPane(PacketLog &log, QWidget *parent)
    : QSplitter(Qt::Horizontal, parent), m_log(log), m_list(new QTreeView), m_text(new Lines)
{
    m_list->setObjectName(QStringLiteral("packets"));
    m_list->setModel(&log);
    m_list->setRootIsDecorated(false);
    m_list->setUniformRowHeights(true);
    m_list->setAlternatingRowColors(true);
    m_text->setObjectName(QStringLiteral("packetText"));
    m_text->setReadOnly(true);
    m_text->setLineWrapMode(QPlainTextEdit::NoWrap);
    m_text->setPlaceholderText(QStringLiteral("Choose a packet to read it."));
    m_text->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    connect(m_list->selectionModel(), &QItemSelectionModel::currentRowChanged, this,
        [this](const QModelIndex &row) { m_text->setPlainText(m_log.text(row.row())); });

    QHeaderView *header = m_list->header();
    for (const auto &[column, sample] : {
             std::pair { PacketLog::Time, "00:00:00.000" },
             std::pair { PacketLog::Way, "Direction" },
             std::pair { PacketLog::Agents, "Server bridge → Job list" },
             std::pair { PacketLog::Content, "Content (the last 500 packets)" },
             std::pair { PacketLog::Size, "1000.00 KiB" },
         }) {
        const int width = fontMetrics().horizontalAdvance(QString::fromUtf8(sample));
        header->resizeSection(column, width + fontMetrics().averageCharWidth() * 3);
    }
    takeRoom(header, PacketLog::Content, header->sectionSize(PacketLog::Content));
    m_list->setMinimumSize(fontMetrics().averageCharWidth() * 45, fontMetrics().height() * 6);
    m_text->setMinimumWidth(fontMetrics().averageCharWidth() * 30);
    addWidget(new WholeRows(m_list));
    addWidget(new WholeRows(m_text));
    setSizes({ 740, 760 });
    setStretchFactor(1, 1);
}
