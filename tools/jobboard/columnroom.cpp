#include "columnroom.h"

#include <QEvent>
#include <QHeaderView>

#include <algorithm>

namespace {

// A child of the header, and deleted with it.
class RoomTaker : public QObject
{
public:
    RoomTaker(QHeaderView *header, int column, int minimum)
        : QObject(header), m_header(header), m_column(column), m_minimum(minimum)
    {
        header->setStretchLastSection(false);
        header->setSectionResizeMode(column, QHeaderView::Fixed);
        header->viewport()->installEventFilter(this);
        connect(header, &QHeaderView::sectionResized, this, &RoomTaker::fit);
        fit();
    }

    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (event->type() == QEvent::Resize) {
            fit();
        }
        return QObject::eventFilter(watched, event);
    }

private:
    void fit()
    {
        const int others = m_header->length() - m_header->sectionSize(m_column);
        m_header->resizeSection(
            m_column, std::max(m_minimum, m_header->viewport()->width() - others));
    }

    QHeaderView *m_header;
    int m_column;
    int m_minimum;
};

}  // namespace

void takeRoom(QHeaderView *header, int column, int minimum)
{
    new RoomTaker(header, column, minimum);
}
