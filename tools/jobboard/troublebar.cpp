#include "troublebar.h"

#include <QAccessible>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QStyle>

TroubleBar::TroubleBar(QWidget *parent)
    : QFrame(parent), m_text(new QLabel(this)), m_retry(new QPushButton(tr("Re&try"), this))
{
    setObjectName(QStringLiteral("trouble"));
    setFrameShape(StyledPanel);
    setBackgroundRole(QPalette::ToolTipBase);
    setForegroundRole(QPalette::ToolTipText);
    setAutoFillBackground(true);
    auto *row = new QHBoxLayout(this);
    auto *icon = new QLabel(this);
    icon->setPixmap(
        style()->standardIcon(QStyle::SP_MessageBoxWarning).pixmap(fontMetrics().height()));
    row->addWidget(icon);
    m_text->setTextFormat(Qt::PlainText);
    m_text->setWordWrap(true);
    m_text->setTextInteractionFlags(Qt::TextSelectableByMouse);
    row->addWidget(m_text, 1);
    row->addWidget(m_retry);
    connect(m_retry, &QPushButton::clicked, this, &TroubleBar::retry);
    hide();
}

void TroubleBar::setTrouble(const QString &text)
{
    if (text == m_text->text()) {
        return;
    }
    m_text->setText(text);
    setVisible(!text.isEmpty());
    m_retry->setAccessibleDescription(text);
    if (!text.isEmpty()) {
        QAccessibleEvent event(m_text, QAccessible::Alert);
        QAccessible::updateAccessibility(&event);
    }
}

QString TroubleBar::trouble() const { return m_text->text(); }
