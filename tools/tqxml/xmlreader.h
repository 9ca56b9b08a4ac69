#ifndef XMLREADER_H
#define XMLREADER_H

#include <QDomDocument>
#include <QList>
#include <QString>
#include <QXmlStreamReader>

class Input;

/// Reads the packetables of an XML document one by one. The document is a packet, one packetable,
/// or one item, around which a packetable is made.
///
/// White space between elements is dropped, but an entry of an array may be blank. Items nested too
/// deeply are an error, or left out if isRaw is set. So is what stands outside of packetables,
/// unless isFieldsOnly is set, which also leaves out the attributes of packetables and items inside
/// of fields.
class XmlReader
{
public:
    struct Options
    {
        bool isRaw = false;
        bool isFieldsOnly = false;
        bool isLimited = true;
    };

    XmlReader(Input &input, Options options);

    /// The next packetable, as the root of a document; null at the end or after an error.
    QDomDocument next();
    /// The line of the input with the start of an element of that packetable.
    qint64 lineOf(const QDomElement &element) const;
    /// Why there is no next packetable; empty at the end of a good document.
    QString error() const;

private:
    bool isAtPacketable() const;
    bool isWhole() const { return !m_options.isRaw && !m_options.isFieldsOnly; }
    void enter();
    QString reasonAgainstFrame() const;
    void leave();
    QDomDocument readPacketable();

    void open();
    void close();
    void addText();
    void leaveOut(const QString &error);
    void limit();

    Input &m_input;
    const Options m_options;
    QXmlStreamReader m_xml;
    int m_depth = 0;  // open elements that hold packetables
    bool m_hasBody = false;  // the first body was found
    bool m_isInBody = false;
    QDomDocument m_document;
    QDomElement m_current;  // the open element
    QList<int> m_nesting;  // levels of items and lists, for each open element
    QString m_text;  // since the last tag
    QList<qint64> m_lines;  // of the packetable's elements
    qint64 m_line = 1;  // where the packetable starts
    qint64 m_values = 0;  // so far in the packetable
};

#endif
