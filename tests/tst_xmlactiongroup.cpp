#include "xmlactiongroup.h"

#include "util.h"
#include "xmlaction.h"

namespace {

// A group with three actions, which log what they signal. Everything may die.
struct Scene
{
    Scene() : group(new XMLActionGroup(nullptr, "tools"))
    {
        for (const char *name : { "a", "b", "c" }) {
            XMLAction *const action = group->addAction(new XMLAction(str(name), 0, 0));
            actions += action;
            QObject::connect(action, &XMLAction::toggled,
                [=](bool on) { log += action->getName() + str(on ? " on" : " off"); });
        }
    }
    ~Scene() { deleteAll(); }
    void deleteAll()
    {
        delete group;
        for (const QPointer<XMLAction> &action : actions) {
            delete action;
        }
    }
    QString takeLog() { return std::exchange(log, {}).join(str(", ")); }
    QString members() const
    {
        QString names;
        for (const XMLAction *member : group->actions()) {
            names += member->getName();
        }
        return names;
    }

    QPointer<XMLActionGroup> group;
    QList<QPointer<XMLAction>> actions;
    QStringList log;
};

}  // namespace

class tst_XMLActionGroup : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void oneStaysChecked();
    void aSlotMayCheckAnother();
    void theCheckedActionIsTheSelectedOne();
    void anActionAddedTwiceIsListedTwice();
    void everythingMayDieAtAnyMoment();
    void onlyACheckedMemberIsRefused();
    void strangersAreLeftAlone();
    void signalsAndSlots();
};

void tst_XMLActionGroup::oneStaysChecked()
{
    Scene scene;
    connect(scene.group, &XMLActionGroup::triggered, [] { QFAIL("emitted by the library"); });
    scene.actions[0]->setChecked(true);
    QCOMPARE(scene.takeLog(), str("b off, c off, a on"));
    scene.group->toggleAction(scene.actions[1]);
    QCOMPARE(scene.takeLog(), str("a off, c off, b on"));
    scene.group->toggleAction(scene.actions[1]);  // which is checked already
    QCOMPARE(scene.takeLog(), QString());
}

void tst_XMLActionGroup::aSlotMayCheckAnother()
{
    Scene scene;
    connect(scene.actions[0], &XMLAction::toggled, [&] { scene.actions[2]->setChecked(true); });
    scene.actions[1]->toggle();
    QCOMPARE(scene.takeLog(), str("a off, c on, c off, b on"));
}

void tst_XMLActionGroup::theCheckedActionIsTheSelectedOne()
{
    Scene scene;
    scene.actions[0]->setChecked(true);
    QVERIFY(!scene.group->checkedAction());
    scene.actions[2]->setSelected(true);
    QCOMPARE(scene.group->checkedAction(), scene.actions[2].data());
    scene.actions[1]->setSelected(true);
    QCOMPARE(scene.group->checkedAction(), scene.actions[1].data());
}

void tst_XMLActionGroup::anActionAddedTwiceIsListedTwice()
{
    Scene scene;
    scene.group->addAction(scene.actions[0]);
    QCOMPARE(scene.members(), str("abca"));
    scene.group->removeAction(scene.actions[0]);  // one of the two, but both connections
    QCOMPARE(scene.members(), str("bca"));
    scene.actions[0]->setChecked(true);
    QCOMPARE(scene.takeLog(), str("a on"));
    delete scene.actions[0];
    QCOMPARE(scene.members(), str("bc"));
}

void tst_XMLActionGroup::everythingMayDieAtAnyMoment()
{
    Scene ending;
    connect(ending.actions[0], &XMLAction::toggled, [&] { delete ending.group; });
    ending.actions[1]->toggle();
    QCOMPARE(ending.takeLog(), str("a off, b on"));  // c is left as it is
    Scene toggled;
    connect(toggled.actions[0], &XMLAction::toggled, [&] { toggled.deleteAll(); });
    toggled.actions[1]->toggle();
    QVERIFY(!toggled.group);
    Scene deleted;
    connect(deleted.actions[0], &QObject::destroyed, [&] { deleted.deleteAll(); });
    delete deleted.actions[0];
    QVERIFY(!deleted.group);
}

void tst_XMLActionGroup::onlyACheckedMemberIsRefused()
{
    Scene scene;
    XMLAction outsider;
    outsider.setActionGroup(scene.group);  // which does not make it a member
    outsider.setChecked(true);
    scene.actions[0]->setChecked(true);
    for (XMLAction *action : { scene.actions[0].data(), scene.actions[1].data(), &outsider }) {
        connect(action, &XMLAction::toggling, scene.group, &XMLActionGroup::approveToggle);
        bool isApproved = action == scene.actions[0];
        Q_EMIT action->toggling(isApproved);
        QCOMPARE(isApproved, action != scene.actions[0]);
    }
}

void tst_XMLActionGroup::strangersAreLeftAlone()
{
    Scene scene;
    XMLActionGroup &group = *scene.group;
    XMLAction outsider;
    outsider.setActionGroup(&group);
    connect(&outsider, SIGNAL(toggled(bool)), &group, SLOT(removeAction()));
    outsider.toggle();
    group.toggleAction(&outsider);
    group.toggleAction(nullptr);
    group.removeAction();  // without a sender, like the next one
    group.updateActions();
    QVERIFY(!group.addAction(nullptr));
    QCOMPARE(outsider.actionGroup(), &group);
    QCOMPARE(scene.members(), str("abc"));
    connect(scene.actions[0], SIGNAL(toggled(bool)), &group, SLOT(removeAction()));
    scene.actions[0]->toggle();  // a member's signal counts
    QCOMPARE(scene.members(), str("bc"));
}

void tst_XMLActionGroup::signalsAndSlots()
{
    QCOMPARE(methodsOf(XMLActionGroup::staticMetaObject),
        QStringList({ str("signal triggered(XMLAction*) action"), str("slot updateActions()"),
            str("slot removeAction(XMLAction*)"), str("slot removeAction()"),
            str("slot approveToggle(bool&) approved") }));
}

QTEST_GUILESS_MAIN(tst_XMLActionGroup)
#include "tst_xmlactiongroup.moc"
