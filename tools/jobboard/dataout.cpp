#include "dataout.h"

#include "jobtable.h"

#include "xmlpacketable.h"

#include <QCoreApplication>
#include <QFontMetrics>
#include <QPainter>
#include <QPrinter>
#include <QSaveFile>
#include <QXmlStreamWriter>

#include <algorithm>

namespace {

constexpr int HEXADECIMAL = 16;

QString translated(const char *text) { return QCoreApplication::translate("DataOut", text); }

// --- Files ---

QByteArray csvLine(const QStringList &cells)
{
    QStringList quoted;
    for (QString cell : cells) {
        const bool isSpecial = std::any_of(cell.cbegin(), cell.cend(),
            [](QChar c) { return QStringLiteral(",\"\r\n").contains(c); });
        if (isSpecial) {
            cell = QLatin1Char('"') + cell.replace(QLatin1Char('"'), QLatin1String("\"\"")) +
                QLatin1Char('"');
        }
        quoted << cell;
    }
    return quoted.join(QLatin1Char(',')).toUtf8() + "\r\n";
}

void writeCsv(const JobTable &table, const QList<int> &rows, QIODevice &file)
{
    file.write(csvLine(table.headings()));
    for (const int row : rows) {
        file.write(csvLine(table.cells(row)));
    }
}

void writeJob(const JobTable &table, int row, QXmlStreamWriter &writer)
{
    const TQKEY_ELEMENT key = table.jobs().key(row);
    const QString type = QString::number(key.hkey, HEXADECIMAL);
    const QList<int> columns = table.shownColumns();
    const QStringList cells = table.cells(row);
    writer.writeStartElement(QStringLiteral("packetable"));
    writer.writeAttribute(QStringLiteral("datatype"), type);
    writer.writeAttribute(QStringLiteral("hkey"), type);
    writer.writeAttribute(QStringLiteral("key"), QString::number(key.key, HEXADECIMAL));
    writer.writeStartElement(QStringLiteral("item"));
    writer.writeAttribute(QStringLiteral("datatype"), type);
    for (int i = 0; i < cells.size(); ++i) {
        const int tag = int(JobModel::fieldOf(columns.at(i)));
        writer.writeEmptyElement(XMLPacketable::getXMLTagNameFromDATATAG(tag));
        if (!cells.at(i).isEmpty()) {
            writer.writeAttribute(QStringLiteral("value"), cells.at(i));
        }
    }
    writer.writeEndElement();
    writer.writeEndElement();
}

bool writeXml(const JobTable &table, const QList<int> &rows, QIODevice &file)
{
    QXmlStreamWriter writer(&file);
    writer.setAutoFormatting(true);
    writer.setAutoFormattingIndent(1);
    writer.writeStartDocument();
    writer.writeDefaultNamespace(QStringLiteral("urn:tqxml:packet:1"));
    writer.writeStartElement(QStringLiteral("tqxml"));
    writer.writeStartElement(QStringLiteral("header"));
    writer.writeEmptyElement(QStringLiteral("src"));
    writer.writeEmptyElement(QStringLiteral("dst"));
    writer.writeEndElement();
    writer.writeStartElement(QStringLiteral("body"));
    for (const int row : rows) {
        writeJob(table, row, writer);
    }
    writer.writeEndDocument();
    return !writer.hasError();
}

// --- Paper ---

// A page that is being painted: lines of text in columns.
class Page
{
public:
    Page(const JobTable &table, QPrinter &printer)
        : m_table(table), m_painter(&printer), m_metrics(m_painter.font(), &printer),
          m_paper(m_painter.viewport())
    {
        const QList<int> columns = table.shownColumns();
        int all = 0;
        for (const int column : columns) {
            all += table.columnWidth(column);
        }
        for (const int column : columns) {
            m_widths << m_paper.width() * table.columnWidth(column) / std::max(1, all);
        }
    }

    // Between the headings at the top and the number at the bottom.
    int lines() const { return std::max(1, m_paper.height() / lineHeight() - 4); }

    void paintHeadings()
    {
        paintLine(0, m_table.headings());
        m_painter.drawLine(0, lineHeight(), m_paper.width(), lineHeight());
    }
    void paintRow(int line, int row) { paintLine(line + 1, m_table.cells(row)); }
    void paintNumber(int page, int pages)
    {
        const QRect bottom(0, m_paper.height() - lineHeight(), m_paper.width(), lineHeight());
        const QString text = translated(QT_TRANSLATE_NOOP("DataOut", "Page %1 of %2"));
        m_painter.drawText(bottom, Qt::AlignRight, text.arg(page).arg(pages));
    }

private:
    int lineHeight() const { return m_metrics.height() * 5 / 4; }

    void paintLine(int line, const QStringList &cells)
    {
        const int gap = m_metrics.averageCharWidth();
        int x = 0;
        for (int i = 0; i < cells.size(); ++i) {
            const QRect cell(x, line * lineHeight(), m_widths.at(i) - gap, lineHeight());
            const QString text = m_metrics.elidedText(cells.at(i), Qt::ElideMiddle, cell.width());
            m_painter.drawText(cell, Qt::AlignVCenter, text);
            x += m_widths.at(i);
        }
    }

    const JobTable &m_table;
    QPainter m_painter;
    QFontMetrics m_metrics;
    QRect m_paper;
    QList<int> m_widths;  // of the columns
};

}  // namespace

QString exportJobs(const JobTable &table, const QList<int> &rows, const QString &fileName)
{
    QSaveFile file(fileName);
    if (!file.open(QIODevice::WriteOnly)) {
        return file.errorString();
    }
    if (!fileName.endsWith(QLatin1String(".xml"), Qt::CaseInsensitive)) {
        writeCsv(table, rows, file);
    } else if (!writeXml(table, rows, file)) {
        return translated(
            QT_TRANSLATE_NOOP("DataOut", "a text has a character that XML does not allow"));
    }
    return file.commit() ? QString() : file.errorString();
}

void printJobs(const JobTable &table, const QList<int> &rows, QPrinter &printer)
{
    Page page(table, printer);
    const int lines = page.lines();
    const int pages = std::max(1, (int(rows.size()) + lines - 1) / lines);
    for (int number = 1; number <= pages; ++number) {
        if (number > 1) {
            printer.newPage();
        }
        page.paintHeadings();
        const int first = (number - 1) * lines;
        const int count = std::min(lines, int(rows.size()) - first);
        for (int line = 0; line < count; ++line) {
            page.paintRow(line, rows.at(first + line));
        }
        page.paintNumber(number, pages);
    }
}
