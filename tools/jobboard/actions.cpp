#include "actions.h"

#include "itemfields.h"

#include <QAction>
#include <QActionGroup>
#include <QKeySequence>
#include <QMainWindow>
#include <QMenu>
#include <QMenuBar>
#include <QToolBar>

Actions::Actions(QMainWindow &window) : QObject(&window), m_window(window)
{
    makeFileMenu();
    makeEditMenu();
    makeViewMenu();
    makeToolBar();
}

QAction *Actions::make(const QString &text, const QList<QKeySequence> &keys)
{
    auto *action = new QAction(text, &m_window);
    action->setShortcuts(keys);
    return action;
}

void Actions::makeFileMenu()
{
    file = m_window.menuBar()->addMenu(tr("&File"));
    reload = make(tr("&Reload"), { QKeySequence(Qt::Key_F5) });
    stop = make(tr("&Stop loading"), {});
    open = make(tr("&Open in a window"), {});
    quit = make(tr("&Quit"), { QKeySequence(Qt::CTRL | Qt::Key_Q) });
    exportAll = make(tr("&Export…"), { QKeySequence(Qt::CTRL | Qt::Key_E) });
    exportAll->setShortcutContext(Qt::WidgetWithChildrenShortcut);  // the packets have it, too
    exportChosen =
        make(tr("Export &chosen rows…"), { QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_E) });
    print = make(tr("&Print preview…"), { QKeySequence(Qt::CTRL | Qt::Key_P) });
    file->addActions({ reload, stop, open });
    file->addSeparator();
    file->addActions({ exportAll, exportChosen, print });
    file->addSeparator();
    file->addAction(quit);
}

void Actions::makeEditMenu()
{
    QMenu *edit = m_window.menuBar()->addMenu(tr("&Edit"));
    copy = make(tr("&Copy rows"), { QKeySequence(Qt::CTRL | Qt::Key_C) });
    copy->setShortcutContext(Qt::WidgetShortcut);  // other panes copy what is theirs
    copyXml = make(tr("Copy job as &XML"), { QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_C) });
    selectAll = make(tr("Select &all rows"), {});
    find = make(tr("&Find"), { QKeySequence(Qt::CTRL | Qt::Key_F) });
    find->setShortcutContext(Qt::WidgetWithChildrenShortcut);  // the packets have it, too
    edit->addActions({ copy, copyXml, selectAll });
    edit->addSeparator();
    edit->addAction(find);
}

void Actions::makeViewMenu()
{
    QMenu *view = m_window.menuBar()->addMenu(tr("&View"));
    makeStates(*view);
    columns = view->addMenu(tr("&Columns"));
    makeThemes(*view);
    view->addSeparator();
    showDetails = make(tr("&Details"), { QKeySequence(Qt::Key_F7) });
    showPackets = make(tr("&Packets"), { QKeySequence(Qt::Key_F8) });
    for (QAction *pane : { showDetails, showPackets }) {
        pane->setCheckable(true);
        pane->setChecked(true);
        view->addAction(pane);
    }
}

std::vector<QAction *> Actions::makeChoice(QMenu &menu, const QStringList &texts)
{
    auto *group = new QActionGroup(&m_window);
    std::vector<QAction *> actions;
    for (const QString &text : texts) {
        QAction *action = group->addAction(text);
        action->setCheckable(true);
        actions.push_back(action);
    }
    actions.front()->setChecked(true);
    menu.addActions(group->actions());
    return actions;
}

void Actions::makeStates(QMenu &view)
{
    QMenu *menu = view.addMenu(tr("&State"));
    states = makeChoice(*menu, QStringList(tr("Any state")) + stateNames());
    for (int i = 0; i < int(states.size()); ++i) {
        states[size_t(i)]->setShortcut(QKeySequence(Qt::CTRL | Qt::Key(Qt::Key_0 + i)));
        connect(
            states[size_t(i)], &QAction::triggered, this, [this, i] { Q_EMIT stateChosen(i - 1); });
    }
}

void Actions::makeThemes(QMenu &view)
{
    QMenu *menu = view.addMenu(tr("&Theme"));
    themes = makeChoice(*menu, { tr("As the &system"), tr("&Light"), tr("&Dark") });
    for (int i = 0; i < int(themes.size()); ++i) {
        connect(themes[size_t(i)], &QAction::triggered, this, [this, i] { Q_EMIT themeChosen(i); });
    }
}

void Actions::setTheme(int theme) { themes[size_t(theme)]->setChecked(true); }

void Actions::makeToolBar()
{
    QToolBar *bar = m_window.addToolBar(tr("Tools"));
    bar->setObjectName(QStringLiteral("tools"));
    bar->setMovable(false);
    bar->addAction(reload);
    bar->addSeparator();
    for (QAction *state : states) {
        bar->addAction(state);
    }
    bar->addSeparator();
    bar->addActions({ showDetails, showPackets });
}
