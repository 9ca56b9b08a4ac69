#ifndef MAINWINDOW_H
#define MAINWINDOW_H

#include "board.h"
#include "jobmodel.h"

#include <QMainWindow>
#include <QTimer>

class Actions;
class DetailPane;
class JobTable;
class QLineEdit;
class QSettings;
class QSplitter;
class SourceTree;
class StatusLine;
class TroubleBar;
class XMLMonitor;

/// The planner's window: sources, the jobs of the chosen one, the details of a job, and the
/// packets.
class MainWindow : public QMainWindow
{
    Q_OBJECT

public:
    /// The settings are not owned and must outlive the window, which keeps its state in them.
    /// Loading begins at once.
    MainWindow(const QByteArray &url, QSettings &settings);
    ~MainWindow() override;

    Board &board() { return m_board; }

protected:
    bool event(QEvent *event) override;

private:
    void build();
    QWidget *buildMiddle();
    void connectBoard();
    void connectActions();
    void connectTable();
    void restore();
    void save();

    void showJobs();
    void showStatus();
    void filterByState(int state);
    void filter(const JobModel::Filter &filter);
    void chooseCurrent();
    void takeItem(const Item &item);
    void openJob();
    void exportRows(const QList<int> &rows);
    void print();
    void escape();
    void retry();
    void applyTheme(int theme);
    QString emptiness() const;

    QSettings &m_settings;
    Board m_board;
    JobModel m_jobs;
    Item m_item;  // in the detail pane; with the null key for none
    int m_theme = 0;
    QTimer m_refresh;  // limits how often jobs are shown while they are being read
    QTimer m_search;  // waits for the next letter
    QTimer m_choice;  // waits for the event loop, until the current row is final

    Actions *m_actions;  // this and all below: children
    QSplitter *m_upper;
    QSplitter *m_panes;
    SourceTree *m_sources;
    QLineEdit *m_text;
    TroubleBar *m_trouble;
    JobTable *m_table;
    DetailPane *m_detail;
    XMLMonitor *m_packets;
    StatusLine *m_status;
};

#endif
