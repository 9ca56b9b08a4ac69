#ifndef ROWREADER_H
#define ROWREADER_H

#include "tqtypes.h"

#include <QHash>
#include <QIODevice>
#include <QStringList>
#include <QXmlStreamReader>

#include <functional>

/// One item of a reply.
struct ReadItem
{
    struct Value
    {
        QString value = {};  ///< of a simple field
        TQKEY_ELEMENT key = {};  ///< of the item that it refers to
        QStringList entries = {};  ///< of an array
    };

    QString name = {};
    TQKEY_ELEMENT key = {};
    QHash<unsigned, Value> fields = {};  ///< by data tag
};

/// Reads a reply while XMLPacket::write() writes it, so that neither its document nor its text is
/// ever in memory as a whole.
class RowReader : public QIODevice
{
    Q_OBJECT

public:
    /// Calls take for each item.
    explicit RowReader(std::function<void(const ReadItem &item)> take);

    /// Whether all that was written is XML, to its end.
    bool isWhole() const;

protected:
    qint64 readData(char *, qint64) override { return -1; }
    qint64 writeData(const char *data, qint64 length) override;

private:
    void startElement();
    void endElement();

    std::function<void(const ReadItem &item)> m_take;
    QXmlStreamReader m_xml;
    int m_depth = 0;  // elements that are open
    bool m_isItem = false;
    ReadItem m_item;
    ReadItem::Value m_value;
    QString m_text;  // of an entry
};

#endif
