#ifndef TQXML_MONITOR_XMLVIEW_H
#define TQXML_MONITOR_XMLVIEW_H

#include <QPlainTextEdit>
#include <QSyntaxHighlighter>

namespace TQXmlInternal {

// Colours for XML as XMLPacket::write() lays it out: no tag goes over several lines. The colours
// suit the palette.
class XmlHighlighter : public QSyntaxHighlighter
{
    Q_OBJECT

public:
    explicit XmlHighlighter(QTextDocument *document);
    void setPalette(const QPalette &palette);

protected:
    void highlightBlock(const QString &line) override;

private:
    void highlightTag(const QString &line, int begin, int end);

    QColor m_tag;
    QColor m_attribute;
    QColor m_value;
};

// Shows XML that is indented by a blank a level. An element over several lines can be folded into
// its first line: with + and - or Space on the keyboard, or with the triangle in the margin.
class XmlView : public QPlainTextEdit
{
    Q_OBJECT

public:
    explicit XmlView(QWidget *parent);

    // Nothing is folded.
    void setXml(const QString &text);
    // Folds or unfolds the element that begins in the block.
    void setFolded(const QTextBlock &block, bool isFolded);
    bool isFolded(const QTextBlock &block) const;
    bool canFold(const QTextBlock &block) const;
    // Folds the items of a packet's body.
    void foldItems();
    void unfoldAll();
    // Finds the next place from the cursor on, or from the beginning, and shows it. Returns false
    // if there is none.
    bool findNext(const QString &text, QTextDocument::FindFlags flags = {});

protected:
    void keyPressEvent(QKeyEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    class Margin;

    QTextBlock endOf(const QTextBlock &block) const;
    void relayout();
    int marginWidth() const;
    void paintMargin(QPaintEvent *event);
    void clickMargin(int y);

    XmlHighlighter *m_highlighter;  // this and the next: children
    QWidget *m_margin;
};

}  // namespace TQXmlInternal

#endif
