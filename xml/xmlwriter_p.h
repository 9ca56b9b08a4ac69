#ifndef TQXML_XMLWRITER_P_H
#define TQXML_XMLWRITER_P_H

#include <QDomNode>
#include <QStringView>

#include <string>

QT_FORWARD_DECLARE_CLASS(QIODevice)

// Writes XML text as UTF-8, laid out and escaped as QtXml does it: one blank of indentation per
// level, and no white space next to texts.

namespace TQXmlInternal {

class XmlWriter
{
public:
    // The device is not owned and must be open for writing.
    explicit XmlWriter(QIODevice *device);
    ~XmlWriter() = default;
    XmlWriter(const XmlWriter &) = delete;
    XmlWriter &operator=(const XmlWriter &) = delete;

    // Opens an element. Its attributes follow, in the order in which they are to stand.
    void openElement(QStringView name);
    void attribute(QStringView name, QStringView value);
    // The same, unless the value is empty.
    void optionalAttribute(QStringView name, QStringView value);
    // The name is that of the element that was opened last and is still open.
    void closeElement(QStringView name);
    void text(QStringView text);
    void cdata(QStringView text);
    void comment(QStringView text);
    void processingInstruction(QStringView target, QStringView data);
    void entityReference(QStringView name);
    // An attribute as name="value", escaped already.
    void rawAttribute(QStringView text);

    // Ends the text; false when the device did not take all of it.
    bool finish();

private:
    // What comes before the next node, unless that is a text.
    enum Space { Nothing, Indentation, LineBreak };

    void closeStartTag();
    void startNode();
    void startLine();
    void append(QStringView text);
    void appendEscaped(QStringView text, bool isAttribute);
    void flush();

    QIODevice *const m_device;
    std::string m_buffer;
    Space m_space = Indentation;
    int m_depth = 0;
    bool m_inStartTag = false;
    bool m_isComplete = true;  // the device took all until now
};

// Writes a document, or a node with all that is below it, down to MAX_TREE_DEPTH levels. The
// attributes of an element stand in the order of their names, after its namespace.
void writeTree(XmlWriter &writer, const QDomNode &root);

}  // namespace TQXmlInternal

#endif
