#ifndef XMLREADER_H
#define XMLREADER_H

#include <QDomDocument>
#include <QList>
#include <QString>
#include <QXmlStreamReader>

class Input;

/// Reads the packetables of an XML document one by one. The document is a packet, one packetable,
/// or one item, which gets a packetable. Of what is not within a packetable nothing is kept.
///
/// White space between elements is dropped, but an entry of an array may be blank. What is nested
/// too deeply is an error, or for isRaw left out.
class XmlReader
{
public:
    struct Options
    {
        bool isRaw = false;
        bool isLimited = true;
    };

    XmlReader(Input &input, Options options);

    /// A document with the next packetable as its root; null at the end or after an error.
    QDomDocument next();
    /// True when a value of that packetable has a line feed.
    bool hasLineFeeds() const { return m_hasLineFeeds; }
    /// Why there is no further packetable; empty at the end of a good document.
    QString error() const;

private:
    bool isAtPacketable() const;
    void enter();
    void leave();
    QDomDocument readPacketable();

    void open();
    void close();
    void addText();
    QString value(const QString &text);
    void leaveOut(const QString &error);
    void limit();

    Input &m_input;
    const Options m_options;
    QXmlStreamReader m_xml;
    int m_depth = 0;  // open elements that hold packetables
    bool m_hasBody = false;  // the first body was met
    bool m_isInBody = false;
    QDomDocument m_document;
    QDomElement m_current;  // the open element
    QList<int> m_nesting;  // of items and lists, for each open element of the packetable
    QString m_text;  // since the last tag
    bool m_hasLineFeeds = false;
    qint64 m_line = 1;  // that the packetable starts in
    qint64 m_values = 0;  // of the packetable
};

#endif
