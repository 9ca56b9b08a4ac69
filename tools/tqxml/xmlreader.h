#ifndef XMLREADER_H
#define XMLREADER_H

#include <QByteArray>
#include <QDomDocument>
#include <QString>

constexpr int MAX_NESTING = 256;  ///< levels of items and lists that conversions follow

/// What becomes of line feeds in values, and of what is nested too deeply: it is an error, or with
/// ReadRaw left out.
enum Reading { KeepLineFeeds, BlankLineFeeds, ReadRaw };

struct XmlInput
{
    QDomDocument document;
    bool hasLineFeeds = false;  ///< in values
    QString error;  ///< where the text is no XML, or nested too deeply, and why; else empty
};

/// The elements, attributes and texts of an XML document. White space between elements is dropped,
/// but an entry of an array may be blank.
XmlInput readXml(const QByteArray &text, Reading reading);

#endif
