#ifndef TQXML_XMLWRITER_P_H
#define TQXML_XMLWRITER_P_H

#include <QDomNode>
#include <QStringView>

#include <string>

QT_FORWARD_DECLARE_CLASS(QIODevice)

// Writes XML as UTF-8, with the layout and the escapes of QtXml: one blank of indentation per
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

    // Opens an element. Write its attributes next, in the order that they shall have.
    void openElement(QStringView name);
    void attribute(QStringView name, QStringView value);
    // Writes the attribute unless the value is empty.
    void optionalAttribute(QStringView name, QStringView value);
    // Closes the innermost open element; the name is its name.
    void closeElement(QStringView name);
    void text(QStringView text);
    void cdata(QStringView text);
    void comment(QStringView text);
    void processingInstruction(QStringView target, QStringView data);
    void entityReference(QStringView name);
    // An attribute as name="value", escaped already.
    void rawAttribute(QStringView text);

    // Writes what is left; false if the device did not take all bytes.
    bool finish();

private:
    // What is written before the next node, unless that is a text.
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
    bool m_isComplete = true;  // the device took all bytes until now
};

// Writes a document, or a node with everything below it, down to MAX_TREE_DEPTH levels. The
// attributes of an element are sorted by name, after its namespace.
void writeTree(XmlWriter &writer, const QDomNode &root);

}  // namespace TQXmlInternal

#endif
