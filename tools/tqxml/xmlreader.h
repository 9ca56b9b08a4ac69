#ifndef XMLREADER_H
#define XMLREADER_H

#include <QByteArray>
#include <QDomDocument>
#include <QString>

/// What becomes of line feeds in values.
enum LineFeeds { KeepLineFeeds, BlankLineFeeds };

struct XmlInput
{
    QDomDocument document;
    bool hasLineFeeds = false;  ///< in values
    QString
        error;  ///< where and why the text is no XML, or too deeply nested; empty when it is not
};

/// The elements, attributes and texts of an XML document. White space between elements is dropped,
/// but an entry of an array may be blank.
XmlInput readXml(const QByteArray &text, LineFeeds lineFeeds);

#endif
