#include "xmlactiongroup.h"

#include "util.h"
#include "xmlaction.h"

namespace {

// A group of three actions, which any step may delete.
struct Scene
{
    Scene() : group(new XMLActionGroup(nullptr, "g"))
    {
        for (QPointer<XMLAction> &action : actions) {
            action = group->addAction(new XMLAction);
            QObject::connect(
                action, &XMLAction::toggled, [this](bool on) { toggles += on ? '1' : '0'; });
        }
    }
    ~Scene()
    {
        delete group;
        for (const QPointer<XMLAction> &action : actions) {
            delete action;
        }
    }
    // Checked states, '-' for one that is gone.
    QString states() const
    {
        QString text;
        for (const QPointer<XMLAction> &action : actions) {
            text += action ? QString::number(action->isChecked()) : str("-");
        }
        return text;
    }
    // The members by number.
    QString members() const
    {
        QString text;
        const QList<XMLAction *> list = group->actions();
        for (const XMLAction *member : list) {
            for (int i = 0; i < 3; ++i) {
                text += member == actions[i] ? QString::number(i) : QString();
            }
        }
        return text.size() == list.size() ? text : str("stale");
    }
    template<typename React>
    void onToggle(int action, React react)
    {
        QObject::connect(actions[action], &XMLAction::toggled, react);
    }

    QPointer<XMLActionGroup> group;
    QPointer<XMLAction> actions[3];
    QByteArray toggles;
};

using Step = std::function<void(Scene &)>;

}  // namespace
Q_DECLARE_METATYPE(Step)

class tst_XMLActionGroup : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void membership();
    void selection();
    void approval();
    void steps_data();
    void steps();
};

void tst_XMLActionGroup::membership()
{
    Scene scene;
    XMLActionGroup &group = *scene.group;
    XMLAction *const first = scene.actions[0];
    QCOMPARE(slotOf(&Derived<XMLActionGroup>::last), size_t(12));
    QVERIFY(!group.addAction(nullptr));
    QCOMPARE(first->actionGroup(), &group);
    QCOMPARE(group.addAction(first), first);
    QCOMPARE(scene.members(), str("0120"));
    group.removeAction(first);
    QCOMPARE(scene.members(), str("120"));
    QVERIFY(!first->actionGroup());
    scene.actions[1]->setChecked(true);
    first->setChecked(true);  // no longer connected, though still listed
    QCOMPARE(scene.states(), str("110"));
    group.removeAction(first);
    group.removeAction();
    group.removeAction(nullptr);
    QCOMPARE(scene.members(), str("12"));
    XMLAction other;
    other.setActionGroup(&group);
    group.removeAction(&other);  // never was a member
    QVERIFY(!other.actionGroup());
    group.updateActions();  // no sender, no effect
    QCOMPARE(scene.states(), str("110"));
}

void tst_XMLActionGroup::selection()
{
    Scene scene;
    scene.actions[0]->setChecked(true);
    QVERIFY(!scene.group->checkedAction());
    scene.actions[2]->setSelected(true);
    QCOMPARE(scene.group->checkedAction(), scene.actions[2].data());
    scene.actions[1]->setSelected(true);
    QCOMPARE(scene.group->checkedAction(), scene.actions[1].data());
}

void tst_XMLActionGroup::approval()
{
    Scene scene;
    XMLAction outsider;
    scene.actions[0]->setChecked(true);
    outsider.setChecked(true);
    for (XMLAction *action : { scene.actions[0].data(), scene.actions[1].data(), &outsider }) {
        connect(action, SIGNAL(toggling(bool &)), scene.group, SLOT(approveToggle(bool &)));
        bool approved = action == scene.actions[0];
        const bool expected = !approved;
        Q_EMIT action->toggling(approved);
        QCOMPARE(approved, expected);
    }
    bool approved = false;
    scene.group->approveToggle(approved);
    QVERIFY(approved);
}

void tst_XMLActionGroup::steps_data()
{
    QTest::addColumn<Step>("step");
    QTest::addColumn<QString>("members");  // null: the group is gone
    QTest::addColumn<QString>("states");
    QTest::addColumn<QString>("toggles");  // null: any
    const auto row = [](const char *name, const char *members, const char *states,
                         const char *toggles, const Step &step) {
        QTest::newRow(name) << step << str(members) << str(states) << str(toggles);
    };
    row("toggleAction", "012", "010", "001001", [](Scene &s) {
        s.actions[0]->setChecked(true);
        s.group->toggleAction(s.actions[1]);
    });
    row("checked already, null, toggle", "012", "001", "001001", [](Scene &s) {
        s.actions[0]->setChecked(true);
        s.group->toggleAction(s.actions[0]);
        s.group->toggleAction(nullptr);
        s.actions[2]->toggle();
    });
    row("not a member", "012", "100", "001", [](Scene &s) {
        XMLAction other;
        s.actions[0]->setChecked(true);
        s.group->toggleAction(&other);
        QVERIFY(!other.isChecked());
    });
    row("unchecked itself", "012", "000", "001000", [](Scene &s) {
        s.actions[0]->setChecked(true);
        s.actions[0]->setChecked(false);
    });
    row("changed meanwhile", "012", "010", "0010101", [](Scene &s) {
        s.actions[0]->setChecked(true);
        s.onToggle(0, [&s] { s.actions[2]->setChecked(true); });
        s.actions[1]->toggle();
    });
    row("added twice, removed once", "12", "-00", nullptr, [](Scene &s) {
        s.group->addAction(s.actions[0]);
        s.group->removeAction(s.actions[0]);
        delete s.actions[0];
    });
    row("in two groups", "12", "-00", nullptr, [](Scene &s) {
        XMLActionGroup other(nullptr, "other");
        other.addAction(s.actions[0]);
        delete s.actions[0];
        QVERIFY(other.actions().isEmpty());
    });
    row("in its own toggled", "02", "0-0", nullptr, [](Scene &s) {
        s.onToggle(1, [&s] { delete s.actions[1]; });
        s.actions[1]->toggle();
    });
    row("in its own toggled, before the group hears", "12", "-00", nullptr, [](Scene &s) {
        auto *action = new XMLAction;
        connect(action, &XMLAction::toggled, [action] { delete action; });
        delete std::exchange(s.actions[0], s.group->addAction(action));
        s.group->toggleAction(action);
    });
    row("destroyed, before the group hears", "12", "-10", nullptr, [](Scene &s) {
        auto *action = new XMLAction;
        connect(action, &QObject::destroyed, [&s] {
            s.actions[1]->setChecked(true);
            QVERIFY(!s.group->checkedAction());
            QCOMPARE(s.group->actions().size(), 2);
        });
        delete std::exchange(s.actions[0], s.group->addAction(action));
        delete action;
    });
    row("in another's toggled", "1", "-1-", nullptr, [](Scene &s) {
        s.onToggle(0, [&s] {
            delete s.actions[2];
            delete s.actions[0];
        });
        s.actions[1]->toggle();
    });
    row("all inside updateActions", nullptr, "---", nullptr, [](Scene &s) {
        s.onToggle(0, [&s] {
            delete s.group;
            for (const QPointer<XMLAction> &action : s.actions) {
                delete action;
            }
        });
        s.actions[1]->toggle();
    });
    row("removed by its own signal", "02", "010", nullptr, [](Scene &s) {
        connect(s.actions[1], SIGNAL(toggled(bool)), s.group, SLOT(removeAction()));
        s.actions[1]->toggle();
    });
    row("signal of a stranger", "012", "000", "", [](Scene &s) {
        QObject stranger;
        connect(&stranger, SIGNAL(objectNameChanged(QString)), s.group, SLOT(removeAction()));
        stranger.setObjectName(str("x"));
    });
    row("removed inside updateActions", "0", "010", nullptr, [](Scene &s) {
        s.onToggle(0, [&s] {
            s.group->removeAction(s.actions[1]);
            s.group->removeAction(s.actions[2]);
        });
        s.actions[1]->toggle();
    });
}

void tst_XMLActionGroup::steps()
{
    QFETCH(Step, step);
    QFETCH(QString, members);
    QFETCH(QString, states);
    QFETCH(QString, toggles);
    Scene scene;
    connect(scene.group, &XMLActionGroup::triggered, [] { QFAIL("emitted by the library"); });
    step(scene);
    QCOMPARE(scene.states(), states);
    QVERIFY(toggles.isNull() || str(scene.toggles.constData()) == toggles);
    QCOMPARE(scene.group.isNull(), members.isNull());
    if (scene.group) {
        QCOMPARE(scene.members(), members);
        for (XMLAction *member : scene.group->actions()) {
            scene.group->toggleAction(member);
        }
        QVERIFY(!scene.group->checkedAction());
    }
    for (const QPointer<XMLAction> &action : scene.actions) {
        if (action) {
            action->setChecked(true);
        }
    }
}

QTEST_GUILESS_MAIN(tst_XMLActionGroup)
#include "tst_xmlactiongroup.moc"
