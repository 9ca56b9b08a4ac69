#include "xmlactiongroup.h"

#include "util.h"
#include "xmlaction.h"

#include <algorithm>
#include <ctime>
#include <vector>

namespace {

// When a test may interfere with an action: in its toggled(), before or after the group hears of
// it, and in its destroyed(), before the group hears.
enum Moment { ToggledBeforeGroup, ToggledAfterGroup, Destroyed };

// A group with the actions 0 to 2, of which 0 is in a second group, too. Everything may die.
class Scene
{
public:
    Scene() : group(new XMLActionGroup(nullptr, "tools")), other(nullptr, "other")
    {
        for (int i = 0; i < 3; ++i) {
            auto action = new XMLAction;
            actions += action;
            QObject::connect(action, &XMLAction::toggled, [=] { reach(ToggledBeforeGroup, i); });
            QObject::connect(action, &QObject::destroyed, [=] { reach(Destroyed, i); });
            if (i == 0) {
                other.addAction(action);
            }
            group->addAction(action);
            QObject::connect(action, &XMLAction::toggled, [=](bool on) {
                m_log += str(on ? "%1 on" : "%1 off").arg(i);
                reach(ToggledAfterGroup, i);
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

    // Does something at that moment, once.
    void at(Moment moment, int action, std::function<void()> interfere)
    {
        m_interference[{ moment, action }] = std::move(interfere);
    }
    QString takeLog() { return std::exchange(m_log, {}).join(str(", ")); }
    // Numbers of the members, and of all actions that are checked.
    QString members() const
    {
        QString numbers;
        for (XMLAction *member : group ? group->actions() : QList<XMLAction *>()) {
            numbers += QStringLiteral(" %1").arg(actions.indexOf(member));
        }
        return numbers.trimmed();
    }
    QString checked() const
    {
        QString numbers;
        for (const QPointer<XMLAction> &action : actions) {
            if (action && action->isChecked()) {
                numbers += QStringLiteral(" %1").arg(actions.indexOf(action));
            }
        }
        return numbers.trimmed();
    }

    QPointer<XMLActionGroup> group;
    XMLActionGroup other;
    QList<QPointer<XMLAction>> actions;

private:
    void reach(Moment moment, int action)
    {
        const auto interfere = m_interference.take({ moment, action });
        if (interfere) {
            interfere();
        }
    }

    QMap<std::pair<int, int>, std::function<void()>> m_interference;
    QStringList m_log;
};

}  // namespace

class tst_XMLActionGroup : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aMemberIsConnectedToTheGroup();
    void oneStaysChecked();
    void aMemberThatIsUncheckedUnchecksAll();
    void aSlotMayCheckAnother();
    void theCheckedActionIsTheSelectedOne();
    void anActionAddedTwiceIsListedTwice();
    void aDyingActionLeavesTheGroup();
    void whatGoesWhileOthersAreUncheckedIsLeftAlone();
    void everyOrderOfDeaths();
    void onlyACheckedMemberIsRefused();
    void strangersAreLeftAlone();
    void manyMembers();
    void signalsAndSlots();
};

void tst_XMLActionGroup::aMemberIsConnectedToTheGroup()
{
    Scene scene;
    const XMLAction *member = scene.actions[1];
    QCOMPARE(member->actionGroup(), scene.group.data());
    QVERIFY(disconnect(member, &XMLAction::toggled, scene.group, &XMLActionGroup::updateActions));
    QVERIFY(disconnect(
        member, &QObject::destroyed, scene.group, qOverload<>(&XMLActionGroup::removeAction)));
}

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
    scene.actions[0]->setChecked(false);
    QCOMPARE(scene.checked(), QString());
    QCOMPARE(scene.takeLog(), str("1 off, 2 off, 0 on, 1 off, 2 off, 0 off"));
}

void tst_XMLActionGroup::aSlotMayCheckAnother()
{
    Scene scene;
    scene.at(ToggledAfterGroup, 0, [&] { scene.actions[2]->setChecked(true); });
    scene.actions[1]->toggle();
    QCOMPARE(scene.takeLog(), str("0 off, 2 on, 2 off, 1 on"));
    QCOMPARE(scene.checked(), str("1"));
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
    QCOMPARE(scene.group->addAction(scene.actions[0]), scene.actions[0].data());
    QCOMPARE(scene.members(), str("0 1 2 0"));
    scene.group->removeAction(scene.actions[0]);  // one of the two, but both connections
    QCOMPARE(scene.members(), str("1 2 0"));
    QVERIFY(!scene.actions[0]->actionGroup());
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
    scene.at(Destroyed, 0, [&] {
        scene.actions[1]->setChecked(true);
        QCOMPARE(scene.members(), str("1 2"));
    });
    delete scene.actions[0];
    QCOMPARE(scene.members(), str("1 2"));
    scene.at(ToggledAfterGroup, 1, [&] { delete scene.actions[1]; });
    scene.actions[1]->toggle();
    QCOMPARE(scene.members(), str("2"));
    scene.at(ToggledBeforeGroup, 2, [&] { delete scene.actions[2]; });
    scene.group->toggleAction(scene.actions[2]);
    QCOMPARE(scene.members(), QString());
}

void tst_XMLActionGroup::whatGoesWhileOthersAreUncheckedIsLeftAlone()
{
    Scene dying;
    dying.at(ToggledAfterGroup, 0, [&] {
        delete dying.actions[2];
        delete dying.actions[0];
    });
    dying.actions[1]->toggle();
    QCOMPARE(dying.members(), str("1"));
    QCOMPARE(dying.takeLog(), str("0 off, 1 on"));
    Scene leaving;
    leaving.at(ToggledAfterGroup, 0, [&] { leaving.group->removeAction(leaving.actions[1]); });
    leaving.actions[1]->toggle();
    QCOMPARE(leaving.members(), str("0 2"));
    QCOMPARE(leaving.checked(), str("1"));
    Scene ending;
    ending.at(ToggledAfterGroup, 0, [&] { delete ending.group; });
    ending.actions[1]->toggle();
    QCOMPARE(ending.takeLog(), str("0 off, 1 on"));  // not 2
}

// Of the group and its members: one by one, and all at once at each moment.
void tst_XMLActionGroup::everyOrderOfDeaths()
{
    constexpr int GROUP = 3;
    const auto kill = [](Scene &scene, int who) {
        who == GROUP ? delete scene.group : delete scene.actions[who];
    };
    const std::function<void(Scene &)> triggers[] = {
        [](Scene &scene) { scene.actions[0]->toggle(); },
        [](Scene &scene) { scene.actions[1]->setChecked(true); },
        [](Scene &scene) { delete scene.actions[0]; },
    };
    std::vector<int> order { 0, 1, 2, GROUP };
    do {
        for (const Moment moment : { ToggledBeforeGroup, ToggledAfterGroup, Destroyed }) {
            for (const auto &trigger : triggers) {
                Scene scene;
                scene.group->addAction(scene.actions[1]);
                scene.at(moment, 0, [&] {
                    for (const int who : order) {
                        kill(scene, who);
                    }
                });
                trigger(scene);
                for (const int who : order) {
                    kill(scene, who);
                    if (scene.group && scene.actions[1]) {
                        scene.actions[1]->setChecked(false);
                        scene.group->toggleAction(scene.actions[1]);
                    }
                }
                QVERIFY(!scene.group);
                QCOMPARE(scene.actions.count(nullptr), 3);
                QVERIFY(scene.other.actions().isEmpty());
            }
        }
    } while (std::next_permutation(order.begin(), order.end()));
}

void tst_XMLActionGroup::onlyACheckedMemberIsRefused()
{
    Scene scene;
    XMLAction outsider;
    outsider.setActionGroup(scene.group);  // which does not make it a member
    outsider.setChecked(true);
    scene.actions[0]->setChecked(true);
    for (XMLAction *action : { scene.actions[0].data(), scene.actions[1].data(), &outsider }) {
        connect(action, SIGNAL(toggling(bool &)), scene.group, SLOT(approveToggle(bool &)));
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
    group.removeAction(&outsider);
    QVERIFY(!outsider.actionGroup());
    // A member's signal, and one that dies while it is passed.
    connect(scene.actions[0], SIGNAL(toggled(bool)), &group, SLOT(removeAction()));
    scene.actions[0]->toggle();
    QVERIFY(!scene.actions[0]->actionGroup());
    XMLAction *const dying = scene.actions[2];
    connect(dying, &QObject::destroyed, &object, [&] { group.removeAction(dying); });
    delete dying;
    QCOMPARE(scene.members(), str("1"));
}

// The time for a toggle grows with the members, not with their square.
void tst_XMLActionGroup::manyMembers()
{
    std::vector<XMLAction> members(20000);
    XMLActionGroup group(nullptr, nullptr);
    for (XMLAction &action : members) {
        group.addAction(&action);
    }
    const std::clock_t start = std::clock();
    group.toggleAction(&members.back());
    QVERIFY(std::clock() - start < 5 * CLOCKS_PER_SEC);
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
