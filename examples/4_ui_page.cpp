// A page of actions, as an application gets it from another, of which one at a time is checked.

#include <QCoreApplication>
#include <cstdio>
#include <memory>
#include <xmlaction.h>
#include <xmlactiongroup.h>
#include <xmlui.h>

constexpr int SHOW_AS = 1, PRINT = 2;  // this application's types of actions

//! [make]
void addAction(XMLUI &page, const char *name, int type, bool checkable)
{
    XMLAction action(QString::fromUtf8(name), type, 0);
    action.setCheckable(checkable);
    page.append(action);  // as a copy
}

XMLUI *makePage()
{
    auto *page = new XMLUI(QStringLiteral("jobs"));
    addAction(*page, "as a list", SHOW_AS, true);
    addAction(*page, "as pages", SHOW_AS, true);
    addAction(*page, "print", PRINT, false);
    page->setActionVisible(PRINT, 0, false);  // every action of that type and originator
    return page;
}
//! [make]

int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    const std::unique_ptr<XMLUI> page(makePage());

    //! [use]
    QList<XMLAction *> actions;  // ours: a tool bar would make one button for each
    page->getActions(actions, true);  // only the visible ones
    XMLActionGroup group(nullptr, "show as");
    for (XMLAction *action : actions) {
        group.addAction(action);
        QObject::connect(action, &XMLAction::toggled, [action](bool checked) {
            std::printf("%s: %s\n", qPrintable(action->getName()), checked ? "on" : "off");
        });
    }
    actions.at(0)->setChecked(true);
    actions.at(1)->setChecked(true);  // the group unchecks the other
    //! [use]

    std::printf("%d visible\n", page->visibleActionCount());
    qDeleteAll(actions);
    return 0;
}
