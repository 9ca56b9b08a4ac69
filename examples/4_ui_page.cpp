// A page of actions, two of which exclude each other.

#include <QCoreApplication>
#include <cstdio>
#include <memory>
#include <xmlaction.h>
#include <xmlactiongroup.h>
#include <xmlui.h>

constexpr int SHOW_AS = 1, PRINT = 2;  // this application's types of actions

void addAction(XMLUI &page, const char *name, int type, bool checkable)
{
    XMLAction action(QString::fromUtf8(name), type, 0);
    action.setCheckable(checkable);
    page.append(action);  // the page stores a copy
}

XMLUI *makePage()
{
    auto *page = new XMLUI(QStringLiteral("jobs"));
    addAction(*page, "as a list", SHOW_AS, true);
    addAction(*page, "as pages", SHOW_AS, true);
    addAction(*page, "print", PRINT, false);
    page->setActionVisible(PRINT, 0, false);  // all actions with this type and originator
    return page;
}

int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    const std::unique_ptr<XMLUI> page(makePage());

    QList<XMLAction *> actions;  // the caller deletes them
    page->getActions(actions, true);  // true: only visible ones
    XMLActionGroup group(nullptr, "show as");
    for (XMLAction *action : actions) {
        group.addAction(action);
        QObject::connect(action, &XMLAction::toggled, [action](bool checked) {
            std::printf("%s: %s\n", qPrintable(action->getName()), checked ? "on" : "off");
        });
    }
    actions.at(0)->setChecked(true);
    actions.at(1)->setChecked(true);  // the group unchecks the other

    std::printf("%d visible\n", page->visibleActionCount());
    qDeleteAll(actions);
    return 0;
}
