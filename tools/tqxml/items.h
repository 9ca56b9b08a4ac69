#ifndef ITEMS_H
#define ITEMS_H

#include "columns.h"

#include <QByteArray>
#include <QHash>
#include <QIODevice>
#include <QXmlStreamReader>

#include <functional>

/// Takes one item as the XML of its packet: the lines of a "packetable" element. Returns false when
/// it wants no more.
using TakeItem = std::function<bool(const QByteArray &xml)>;

/// Takes a packet that is written to it apart into items, so that neither its document nor its text
/// is in memory as a whole.
class ItemSplitter : public QIODevice
{
public:
    explicit ItemSplitter(const TakeItem &take) : m_take(take) { open(WriteOnly); }

    bool isSequential() const override { return true; }

protected:
    qint64 readData(char *, qint64) override { return -1; }
    /// -1 once no more items are wanted.
    qint64 writeData(const char *data, qint64 size) override;

private:
    bool takeLine(qsizetype start, qsizetype end);

    const TakeItem m_take;
    QByteArray m_text;  // of the item so far, and what is no whole line yet
    qsizetype m_item = -1;  // where the item starts; -1 outside of items
    qsizetype m_line = 0;  // where the first line that was not seen yet starts
    bool m_isDone = false;
};

/// Reads the cells of items.
class ItemReader
{
public:
    explicit ItemReader(const Columns &columns);

    /// One cell for each column. The item has no foreignCharacter().
    QStringList cellsOf(const QByteArray &xml);

private:
    void readField(QString &cell);

    QXmlStreamReader m_xml;
    const int m_columns;
    int m_key = -1;  // the column with the key of the item; -1 if there is none
    QHash<QString, int> m_fields;  // the other columns by element name
};

/// The first character of an item that XML cannot hold, a control character; 0 if there is none.
char foreignCharacter(const QByteArray &xml);

/// An item with only the fields of these columns.
QByteArray itemWith(const Columns &columns, const QByteArray &xml);

#endif
