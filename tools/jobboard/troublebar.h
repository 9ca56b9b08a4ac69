#ifndef TROUBLEBAR_H
#define TROUBLEBAR_H

#include <QFrame>

class QLabel;
class QPushButton;

/// Says what is wrong, as long as it is, with a button to try again. Hidden without trouble.
class TroubleBar : public QFrame
{
    Q_OBJECT

public:
    explicit TroubleBar(QWidget *parent);

    /// An empty text hides the bar.
    void setTrouble(const QString &text);
    QString trouble() const;

Q_SIGNALS:
    void retry();

private:
    QLabel *m_text;  // child
    QPushButton *m_retry;  // child
};

#endif
