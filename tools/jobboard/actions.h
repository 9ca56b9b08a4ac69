#ifndef ACTIONS_H
#define ACTIONS_H

#include <QObject>

#include <vector>

class QAction;
class QActionGroup;
class QMainWindow;
class QMenu;

/// What the user can do: actions, their shortcuts, menus and tool bar.
class Actions : public QObject
{
    Q_OBJECT

public:
    /// Fills the window's menu bar, and adds a tool bar to it.
    explicit Actions(QMainWindow &window);

    /// Marks the theme: system, light or dark.
    void setTheme(int theme);

    // All belong to the window. Those in menus are in this order.
    QAction *reload;
    QAction *stop;
    QAction *open;
    QAction *exportAll;
    QAction *exportChosen;
    QAction *print;
    QAction *quit;
    QAction *copy;  ///< rows
    QAction *copyXml;
    QAction *selectAll;
    QAction *find;
    QAction *showDetails;
    QAction *showPackets;
    std::vector<QAction *> states;  ///< any state, then each; one of them is checked
    std::vector<QAction *> themes;  ///< in the order of Theme; one of them is checked
    QMenu *file;  ///< its actions above the last separator are about data
    QMenu *columns;  ///< filled when it opens

Q_SIGNALS:
    /// A number of a state; -1 for any.
    void stateChosen(int state);
    /// A number of a theme.
    void themeChosen(int theme);

private:
    QAction *make(const QString &text, const QList<QKeySequence> &keys);
    void makeFileMenu();
    void makeEditMenu();
    void makeViewMenu();
    void makeStates(QMenu &view);
    void makeThemes(QMenu &view);
    void makeToolBar();
    std::vector<QAction *> makeChoice(QMenu &menu, const QStringList &texts);

    QMainWindow &m_window;
};

#endif
