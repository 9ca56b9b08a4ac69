#ifndef PLACEHOLDER_H
#define PLACEHOLDER_H

#include <QAbstractItemModel>
#include <QPaintEvent>
#include <QPainter>
#include <QPalette>

/// A view that says why it is empty, in its middle and to screen readers.
template<typename View>
class WithPlaceholder : public View
{
public:
    using View::View;

    /// Shown while the view has no rows.
    void setPlaceholder(const QString &text)
    {
        if (text != m_text) {
            m_text = text;
            this->setAccessibleDescription(text);
            this->viewport()->update();
        }
    }
    const QString &placeholder() const { return m_text; }

protected:
    void paintEvent(QPaintEvent *event) override
    {
        View::paintEvent(event);
        if (this->model() && this->model()->rowCount(this->rootIndex()) == 0) {
            QPainter painter(this->viewport());
            painter.setPen(this->palette().color(QPalette::PlaceholderText));
            const int margin = this->fontMetrics().height();
            painter.drawText(this->viewport()->rect().adjusted(margin, margin, -margin, -margin),
                Qt::AlignCenter | Qt::TextWordWrap, m_text);
        }
    }

private:
    QString m_text;
};

#endif
