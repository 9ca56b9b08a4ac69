#include "xmlactiongroup.h"

#include "util.h"
#include "xmlaction.h"

#include <vector>

namespace {

// A group with the actions 0 to 2, of which 0 is in a second group, too. Everything may die.
class Scene
{
public:
    Scene() : group(new XMLActionGroup(nullptr, "tools")), other(nullptr, "other")
    {
        for (int i = 0; i < 3; ++i) {
            auto action = new XMLAction;
            actions += action;
            QObject::connect(action, &XMLAction::toggled, [=] { run(beforeGroup, i); });
            QObject::connect(action, &QObject::destroyed, [=] { run(whenDestroyed, i); });
            if (i == 0) {
                other.addAction(action);
            }
            group->addAction(action);
            QObject::connect(action, &XMLAction::toggled, [=](bool on) {
                m_log += str(on ? "%1 on" : "%1 off").arg(i);
                run(afterGroup, i);
            });
        }
    }
    ~Scene()
    {
        delete group;
        for (const QPointer<XMLAction> &action : actions) {
            delete action;
        }
    }

    QString takeLog() { return std::exchange(m_log, {}).join(str(", ")); }
    // Numbers of the members, and of all actions that are checked.
    QString members() const
    {
        QStringList numbers;
        for (XMLAction *member : group ? group->actions() : QList<XMLAction *>()) {
            numbers += QString::number(actions.indexOf(member));
        }
        return numbers.join(QLatin1Char(' '));
    }
    QString checked() const
    {
        QStringList numbers;
        for (const QPointer<XMLAction> &action : actions) {
            if (action && action->isChecked()) {
                numbers += QString::number(actions.indexOf(action));
            }
        }
        return numbers.join(QLatin1Char(' '));
    }

    QPointer<XMLActionGroup> group;
    XMLActionGroup other;
    QList<QPointer<XMLAction>> actions;

    // What slots of an action do, once: in toggled() before or after the group hears of it, and in
    // destroyed() before the group hears.
    using Slots = QMap<int, std::function<void()>>;
    Slots beforeGroup;
    Slots afterGroup;
    Slots whenDestroyed;

private:
    static void run(Slots &slots, int action)
    {
        if (const auto slot = slots.take(action)) {
            slot();
        }
    }

    QStringList m_log;
};

}  // namespace

class tst_XMLActionGroup : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void oneStaysChecked();
    void aMemberThatIsUncheckedUnchecksAll();
    void aSlotMayCheckAnother();
    void anySequenceOfCallsBehavesLikeAList();
    void theCheckedActionIsTheSelectedOne();
    void anActionAddedTwiceIsListedTwice();
    void aDyingActionLeavesTheGroup();
    void whatGoesWhileOthersAreUncheckedIsLeftAlone();
    void everythingMayDieAtAnyMoment();
    void onlyACheckedMemberIsRefused();
    void strangersAreLeftAlone();
    void timeGrowsWithTheMembers();
    void signalsAndSlots();
};

void tst_XMLActionGroup::oneStaysChecked()
{
    Scene scene;
    connect(scene.group, &XMLActionGroup::triggered, [] { QFAIL("emitted by the library"); });
    scene.actions[0]->setChecked(true);
    QCOMPARE(scene.takeLog(), str("1 off, 2 off, 0 on"));
    scene.group->toggleAction(scene.actions[1]);
    QCOMPARE(scene.takeLog(), str("0 off, 2 off, 1 on"));
    QCOMPARE(scene.checked(), str("1"));
    scene.group->toggleAction(scene.actions[1]);  // which is checked already
    QCOMPARE(scene.takeLog(), QString());
}

void tst_XMLActionGroup::aMemberThatIsUncheckedUnchecksAll()
{
    Scene scene;
    scene.actions[0]->setChecked(true);
    scene.takeLog();
    scene.actions[0]->setChecked(false);
    QCOMPARE(scene.checked(), QString());
    QCOMPARE(scene.takeLog(), str("1 off, 2 off, 0 off"));
}

void tst_XMLActionGroup::aSlotMayCheckAnother()
{
    Scene scene;
    scene.afterGroup[0] = [&] { scene.actions[2]->setChecked(true); };
    scene.actions[1]->toggle();
    QCOMPARE(scene.takeLog(), str("0 off, 2 on, 2 off, 1 on"));
    QCOMPARE(scene.checked(), str("1"));
}

// Whatever is toggled and checked, added and removed: members are a list, and one that changes
// unchecks the others.
void tst_XMLActionGroup::anySequenceOfCallsBehavesLikeAList()
{
    Random random;
    for (int run = 0; run < 200; ++run) {
        std::vector<XMLAction> actions(4);
        XMLActionGroup group(nullptr, nullptr);
        QList<XMLAction *> members;
        QMap<XMLAction *, bool> checked;
        for (int step = 0; step < 30; ++step) {
            XMLAction *const action = &actions[size_t(random.below(4))];
            const bool isMember = members.contains(action);
            const int call = random.below(5);
            if (call == 0 && !isMember) {
                QCOMPARE(group.addAction(action), action);
                members += action;
            } else if (call == 1) {
                group.removeAction(action);
                members.removeOne(action);
            } else if (call == 2) {
                group.toggleAction(action);
            } else if (call > 2) {
                action->setChecked(call == 3);
            }
            const bool isChanged = call > 2 || (call == 2 && isMember && !checked[action]);
            for (XMLAction *member : isChanged &&isMember ? members : QList<XMLAction *>()) {
                checked[member] = false;
            }
            checked[action] = isChanged ? call != 4 : checked[action];
            QCOMPARE(group.actions(), members);
            for (XMLAction &each : actions) {
                QCOMPARE(each.isChecked(), checked[&each]);
                QCOMPARE(each.actionGroup(), members.contains(&each) ? &group : nullptr);
            }
        }
    }
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
    QCOMPARE(scene.members(), str("0 1 2 0"));
    scene.group->removeAction(scene.actions[0]);  // one of the two, but both connections
    QCOMPARE(scene.members(), str("1 2 0"));
    scene.actions[1]->setChecked(true);
    scene.actions[0]->setChecked(true);
    QCOMPARE(scene.checked(), str("0 1"));
    QCOMPARE(scene.other.actions().size(), 1);
    delete scene.actions[0];
    QCOMPARE(scene.members(), str("1 2"));
}

void tst_XMLActionGroup::aDyingActionLeavesTheGroup()
{
    Scene scene;
    scene.whenDestroyed[0] = [&] {
        scene.actions[1]->setChecked(true);
        QCOMPARE(scene.members(), str("1 2"));
    };
    delete scene.actions[0];
    QCOMPARE(scene.members(), str("1 2"));
    scene.afterGroup[1] = [&] { delete scene.actions[1]; };
    scene.actions[1]->toggle();
    QCOMPARE(scene.members(), str("2"));
}

void tst_XMLActionGroup::whatGoesWhileOthersAreUncheckedIsLeftAlone()
{
    Scene dying;
    dying.afterGroup[0] = [&] {
        delete dying.actions[2];
        delete dying.actions[0];
    };
    dying.actions[1]->toggle();
    QCOMPARE(dying.members(), str("1"));
    QCOMPARE(dying.takeLog(), str("0 off, 1 on"));
    Scene leaving;
    leaving.afterGroup[0] = [&] { leaving.group->removeAction(leaving.actions[1]); };
    leaving.actions[1]->toggle();
    QCOMPARE(leaving.members(), str("0 2"));
    QCOMPARE(leaving.checked(), str("1"));
    Scene ending;
    ending.afterGroup[0] = [&] { delete ending.group; };
    ending.actions[1]->toggle();
    QCOMPARE(ending.takeLog(), str("0 off, 1 on"));  // not 2
}

// All at once, in any order, in a slot of action 0 while it is toggled, unchecked or deleted.
void tst_XMLActionGroup::everythingMayDieAtAnyMoment()
{
    for (const auto slots : { &Scene::beforeGroup, &Scene::afterGroup, &Scene::whenDestroyed }) {
        for (const int trigger : { 0, 1, 2 }) {
            QList<int> order { 0, 1, 2, 3 };
            do {
                Scene scene;
                scene.group->addAction(scene.actions[1]);
                const auto killAll = [&] {
                    for (const int who : order) {
                        who == 3 ? delete scene.group : delete scene.actions[who];
                    }
                };
                (scene.*slots)[0] = killAll;
                trigger == 0       ? scene.actions[0]->toggle()
                    : trigger == 1 ? scene.actions[1]->setChecked(true)
                                   : delete scene.actions[0];
                killAll();
                QVERIFY(scene.other.actions().isEmpty());
            } while (std::next_permutation(order.begin(), order.end()));
        }
    }
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
    bool isApproved = false;
    scene.group->approveToggle(isApproved);  // without a sender
    QVERIFY(isApproved);
}

void tst_XMLActionGroup::strangersAreLeftAlone()
{
    Scene scene;
    XMLActionGroup &group = *scene.group;
    XMLAction outsider;
    outsider.setActionGroup(&group);
    QObject object;
    for (QObject *stranger : { static_cast<QObject *>(&outsider), &object }) {
        connect(stranger, SIGNAL(objectNameChanged(QString)), &group, SLOT(removeAction()));
        stranger->setObjectName(str("x"));
    }
    group.removeAction();  // without a sender, like the next two
    group.removeAction(nullptr);
    group.updateActions();
    group.toggleAction(nullptr);
    group.toggleAction(&outsider);
    QVERIFY(!group.addAction(nullptr));
    QVERIFY(!outsider.isChecked());
    QCOMPARE(outsider.actionGroup(), &group);
    QCOMPARE(scene.members(), str("0 1 2"));
    connect(scene.actions[0], SIGNAL(toggled(bool)), &group, SLOT(removeAction()));
    scene.actions[0]->toggle();  // a member's signal counts
    QCOMPARE(scene.members(), str("1 2"));
}

void tst_XMLActionGroup::timeGrowsWithTheMembers()
{
    QVERIFY(isLinear(20000, [](int count) {
        std::vector<XMLAction> members { size_t(count) };
        XMLActionGroup group(nullptr, nullptr);
        for (XMLAction &action : members) {
            group.addAction(&action);
        }
        group.toggleAction(&members.back());
    }));
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
