#include "xmlview.h"

#include <QAbstractTextDocumentLayout>
#include <QFontDatabase>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QStyleOption>
#include <QTextBlock>

namespace TQXmlInternal {

namespace {

struct Colours
{
    QRgb tag;
    QRgb attribute;
    QRgb value;
};
constexpr Colours ON_LIGHT { 0x1f5fa8, 0x8a4b08, 0x27692b };
constexpr Colours ON_DARK { 0x7fb8f0, 0xe0b070, 0x98c98a };

int indentOf(const QString &line)
{
    int blanks = 0;
    while (blanks < line.size() && line[blanks] == QLatin1Char(' ')) {
        ++blanks;
    }
    return blanks;
}

// Whether the line is a start tag whose end tag is on a later line.
bool opensElement(const QString &line)
{
    const int begin = indentOf(line);
    return line.size() > begin + 1 && line[begin] == QLatin1Char('<') &&
        line[begin + 1].isLetter() && line.endsWith(QLatin1Char('>')) &&
        !line.endsWith(QLatin1String("/>")) && line.count(QLatin1Char('<')) == 1;
}

// The line of the end tag that belongs to the line of a start tag.
QString endTagOf(const QString &line)
{
    const int begin = indentOf(line) + 1;
    int end = begin;
    while (line[end] != QLatin1Char(' ') && line[end] != QLatin1Char('>')) {
        ++end;
    }
    return line.left(begin - 1) + QStringLiteral("</%1>").arg(line.mid(begin, end - begin));
}

void showLine(QTextBlock block, bool isVisible)
{
    block.setVisible(isVisible);
    block.setLineCount(isVisible ? qMax(1, block.layout()->lineCount()) : 0);
}

}  // namespace

XmlHighlighter::XmlHighlighter(QTextDocument *document) : QSyntaxHighlighter(document) {}

void XmlHighlighter::setPalette(const QPalette &palette)
{
    const bool isDark = palette.color(QPalette::Base).lightness() < 128;
    const Colours &colours = isDark ? ON_DARK : ON_LIGHT;
    m_tag = QColor::fromRgb(colours.tag);
    m_attribute = QColor::fromRgb(colours.attribute);
    m_value = QColor::fromRgb(colours.value);
    rehighlight();
}

void XmlHighlighter::highlightBlock(const QString &line)
{
    int begin = int(line.indexOf(QLatin1Char('<')));
    while (begin >= 0) {
        int end = begin;
        bool isQuoted = false;
        while (end < line.size() && (isQuoted || line[end] != QLatin1Char('>'))) {
            isQuoted = isQuoted != (line[end] == QLatin1Char('"'));
            ++end;
        }
        highlightTag(line, begin, qMin(end + 1, int(line.size())));
        begin = int(line.indexOf(QLatin1Char('<'), end));
    }
}

void XmlHighlighter::highlightTag(const QString &line, int begin, int end)
{
    setFormat(begin, end - begin, m_tag);
    int blank = int(line.indexOf(QLatin1Char(' '), begin));
    while (blank >= 0 && blank < end) {
        const int open = int(line.indexOf(QLatin1Char('"'), blank));
        const int close = open < 0 ? -1 : int(line.indexOf(QLatin1Char('"'), open + 1));
        if (close < 0 || close >= end) {
            return;
        }
        setFormat(blank, open - blank, m_attribute);
        setFormat(open, close + 1 - open, m_value);
        blank = int(line.indexOf(QLatin1Char(' '), close));
    }
}

// Shows a triangle beside each line that can be folded.
class XmlView::Margin : public QWidget
{
public:
    explicit Margin(XmlView *view) : QWidget(view), m_view(view) {}

protected:
    void paintEvent(QPaintEvent *event) override { m_view->paintMargin(event); }
    void mousePressEvent(QMouseEvent *event) override { m_view->clickMargin(event->pos().y()); }

private:
    XmlView *const m_view;
};

XmlView::XmlView(QWidget *parent)
    : QPlainTextEdit(parent), m_highlighter(new XmlHighlighter(document())),
      m_margin(new Margin(this))
{
    setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    setLineWrapMode(NoWrap);
    setReadOnly(true);
    setTabChangesFocus(true);
    setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    setViewportMargins(marginWidth(), 0, 0, 0);
    m_highlighter->setPalette(palette());
    connect(this, &XmlView::updateRequest, m_margin, [this] { m_margin->update(); });
}

void XmlView::setXml(const QString &text) { setPlainText(text); }

bool XmlView::canFold(const QTextBlock &block) const
{
    return block.next().isValid() && opensElement(block.text());
}

bool XmlView::isFolded(const QTextBlock &block) const
{
    return canFold(block) && !block.next().isVisible();
}

// The last line of the element that begins in the block. A text that was cut may lack it.
QTextBlock XmlView::endOf(const QTextBlock &block) const
{
    const QString endTag = endTagOf(block.text());
    for (QTextBlock line = block.next(); line.isValid(); line = line.next()) {
        if (line.text() == endTag) {
            return line;
        }
    }
    return document()->lastBlock();
}

void XmlView::setFolded(const QTextBlock &block, bool isFolded)
{
    if (!canFold(block) || isFolded == this->isFolded(block)) {
        return;
    }
    const QTextBlock end = endOf(block).next();
    for (QTextBlock line = block.next(); line != end; line = line.next()) {
        showLine(line, !isFolded);
    }
    if (!textCursor().block().isVisible()) {
        setTextCursor(QTextCursor(block));
    }
    relayout();
}

void XmlView::relayout()
{
    QAbstractTextDocumentLayout *layout = document()->documentLayout();
    Q_EMIT layout->documentSizeChanged(layout->documentSize());
    viewport()->update();
    m_margin->update();
}

void XmlView::foldItems()
{
    constexpr int ITEM_INDENT = 2;
    QTextBlock line = document()->firstBlock();
    while (line.isValid()) {
        const bool isItem = indentOf(line.text()) == ITEM_INDENT && canFold(line);
        const QTextBlock next = isItem ? endOf(line).next() : line.next();
        if (isItem) {
            setFolded(line, true);
        }
        line = next;
    }
}

void XmlView::unfoldAll()
{
    for (QTextBlock line = document()->firstBlock(); line.isValid(); line = line.next()) {
        showLine(line, true);
    }
    relayout();
}

bool XmlView::findNext(const QString &text, QTextDocument::FindFlags flags)
{
    const QTextCursor before = textCursor();
    if (text.isEmpty()) {
        return false;
    }
    if (!find(text, flags)) {
        const bool isBackward = flags.testFlag(QTextDocument::FindBackward);
        moveCursor(isBackward ? QTextCursor::End : QTextCursor::Start);
        if (!find(text, flags)) {
            setTextCursor(before);
            return false;
        }
    }
    QTextBlock shown = textCursor().block();
    while (!shown.isVisible()) {
        shown = shown.previous();
    }
    const QTextCursor found = textCursor();
    if (shown != found.block()) {
        setFolded(shown, false);
    }
    setTextCursor(found);
    ensureCursorVisible();
    return true;
}

void XmlView::keyPressEvent(QKeyEvent *event)
{
    const QTextBlock line = textCursor().block();
    const QString key = event->text();
    if (key == QLatin1String(" ")) {
        setFolded(line, !isFolded(line));
    } else if (key == QLatin1String("-")) {
        setFolded(line, true);
    } else if (key == QLatin1String("+")) {
        setFolded(line, false);
    } else {
        QPlainTextEdit::keyPressEvent(event);
    }
}

void XmlView::resizeEvent(QResizeEvent *event)
{
    QPlainTextEdit::resizeEvent(event);
    const QRect room = contentsRect();
    m_margin->setGeometry(room.left(), room.top(), marginWidth(), room.height());
}

void XmlView::changeEvent(QEvent *event)
{
    QPlainTextEdit::changeEvent(event);
    if (event->type() == QEvent::PaletteChange && m_highlighter) {
        m_highlighter->setPalette(palette());
    }
}

int XmlView::marginWidth() const { return fontMetrics().height(); }

void XmlView::paintMargin(QPaintEvent *)
{
    QPainter painter(m_margin);
    QStyleOption option;
    option.initFrom(m_margin);
    QTextBlock line = firstVisibleBlock();
    while (line.isValid()) {
        const QRectF place = blockBoundingGeometry(line).translated(contentOffset());
        if (place.top() > m_margin->height()) {
            return;
        }
        if (line.isVisible() && canFold(line)) {
            const int size = fontMetrics().height() * 2 / 3;
            option.rect = QRect(2, int(place.center().y()) - size / 2, size, size);
            const auto arrow =
                isFolded(line) ? QStyle::PE_IndicatorArrowRight : QStyle::PE_IndicatorArrowDown;
            style()->drawPrimitive(arrow, &option, &painter, m_margin);
        }
        line = line.next();
    }
}

void XmlView::clickMargin(int y)
{
    const QTextBlock line = cursorForPosition({ 0, y }).block();
    setFolded(line, !isFolded(line));
}

}  // namespace TQXmlInternal
