#include "statusline.h"

#include "board.h"
#include "jobmodel.h"

#include <QLabel>
#include <QLocale>
#include <QProgressBar>

namespace {

constexpr int MINUTE = 60;
constexpr int PROGRESS_WIDTH = 20;  // letters

}  // namespace

StatusLine::StatusLine(const Board &board, const JobModel &jobs, QWidget *parent)
    : QStatusBar(parent), m_board(board), m_jobs(jobs), m_text(new QLabel(this)),
      m_progress(new QProgressBar(this))
{
    m_text->setObjectName(QStringLiteral("counts"));
    m_text->setTextFormat(Qt::PlainText);
    m_text->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    addWidget(m_text, 1);
    m_progress->setAccessibleName(tr("Loading"));
    m_progress->setFixedWidth(fontMetrics().averageCharWidth() * PROGRESS_WIDTH);
    m_progress->setMaximumHeight(fontMetrics().height());
    addPermanentWidget(m_progress);
}

QString StatusLine::text() const { return m_text->text(); }

void StatusLine::update()
{
    m_progress->setVisible(m_board.isLoading());
    m_progress->setValue(m_board.progress());
    const QString age = this->age();
    m_text->setText(age.isEmpty() ? counts() : counts() + QStringLiteral(" – ") + age);
    m_text->setToolTip(m_text->text());
}

QString StatusLine::counts() const
{
    const QString shown = QLocale().toString(m_jobs.rowCount());
    const QString all = QLocale().toString(m_jobs.total());
    return m_board.isPart() ? tr("%1 of %2 jobs that are loaded so far").arg(shown, all)
                            : tr("%1 of %2 jobs").arg(shown, all);
}

// Nothing while a first load goes on.
QString StatusLine::age() const
{
    if (!m_board.readAt().isValid()) {
        return m_board.isLoading() ? QString() : tr("not all jobs are loaded");
    }
    const QString time = QLocale().toString(m_board.readAt().time(), QLocale::ShortFormat);
    if (m_board.problem().isEmpty()) {
        return tr("updated %1").arg(time);  // and nothing has changed since
    }
    const qint64 minutes = m_board.readAt().secsTo(QDateTime::currentDateTime()) / MINUTE;
    return minutes < 1 ? tr("as of %1").arg(time)
                       : tr("as of %1, %2 min ago").arg(time, QLocale().toString(minutes));
}
