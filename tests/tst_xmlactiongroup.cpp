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

// Signals of an object that is no action.
class Stranger : public QObject
{
    Q_OBJECT

Q_SIGNALS:
    void happened();
    void asked(bool &flag);
};

}  // namespace
Q_DECLARE_METATYPE(Step)

class tst_XMLActionGroup : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void operations();
    void membership();
    void toggling_data();
    void toggling();
    void selection();
    void approval();
    void destruction_data();
    void destruction();
};

void tst_XMLActionGroup::operations()
{
    using O = XMLActionGroup;
    QVERIFY((existIn<O, XMLAction *(XMLAction *)>({ &O::addAction })));
    QVERIFY((existIn<O, QList<XMLAction *>() const>({ &O::actions })));
    QVERIFY((existIn<O, XMLAction *() const>({ &O::checkedAction })));
    QVERIFY((existIn<O, void(XMLAction *)>({ &O::toggleAction, &O::removeAction, &O::triggered })));
    const QMetaObject &meta = O::staticMetaObject;
    QStringList methods;
    for (int i = meta.methodOffset(); i < meta.methodCount(); ++i) {
        methods += QString::fromLatin1(meta.method(i).methodSignature()) + QLatin1Char(' ') +
            QString::fromLatin1(meta.method(i).parameterNames().value(0));
    }
    QCOMPARE(methods.join(QLatin1Char(',')),
        str("triggered(XMLAction*) action,updateActions() ,removeAction(XMLAction*) action,"
            "removeAction() ,approveToggle(bool&) approved"));
    QCOMPARE(meta.className(), "XMLActionGroup");
    QCOMPARE(slotOf(&Derived<O>::last), size_t(12));
    QObject parent;
    QCOMPARE((new O(&parent, "\xe4"))->objectName(), str("\xc3\xa4"));
    QCOMPARE((new O(&parent, nullptr))->parent(), &parent);
}

void tst_XMLActionGroup::membership()
{
    Scene scene;
    XMLActionGroup &group = *scene.group;
    XMLAction *const first = scene.actions[0];
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

void tst_XMLActionGroup::toggling_data()
{
    QTest::addColumn<QString>("before");
    QTest::addColumn<Step>("step");
    QTest::addColumn<QString>("after");
    QTest::addColumn<QString>("toggles");
    const auto row = [](const char *name, const char *before, const Step &step, const char *after,
                         const char *toggles) {
        QTest::newRow(name) << str(before) << step << str(after) << str(toggles);
    };
    row(
        "toggleAction", "100", [](Scene &s) { s.group->toggleAction(s.actions[1]); }, "010", "001");
    row(
        "checked already", "100", [](Scene &s) { s.group->toggleAction(s.actions[0]); }, "100", "");
    row(
        "null", "100", [](Scene &s) { s.group->toggleAction(nullptr); }, "100", "");
    row(
        "toggle", "001", [](Scene &s) { s.actions[0]->toggle(); }, "100", "001");
    row(
        "unchecked itself", "110", [](Scene &s) { s.actions[0]->setChecked(false); }, "000", "000");
    const Step notAMember = [](Scene &s) {
        XMLAction other;
        s.group->toggleAction(&other);
        QVERIFY(!other.isChecked());
    };
    row("not a member", "100", notAMember, "100", "");
    const Step nested = [](Scene &s) {
        s.onToggle(0, [&s] { s.actions[2]->setChecked(true); });
        s.actions[1]->toggle();
    };
    row("changed meanwhile", "100", nested, "010", "0101");
}

void tst_XMLActionGroup::toggling()
{
    QFETCH(QString, before);
    QFETCH(Step, step);
    QFETCH(QString, after);
    QFETCH(QString, toggles);
    Scene scene;
    for (int i = 0; i < 3; ++i) {
        const QSignalBlocker blocker(scene.actions[i].data());
        scene.actions[i]->setChecked(before.at(i) == QLatin1Char('1'));
    }
    connect(scene.group, &XMLActionGroup::triggered, [] { QFAIL("emitted by the library"); });
    step(scene);
    QCOMPARE(scene.states(), after);
    QCOMPARE(str(scene.toggles.constData()), toggles);
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
    Stranger stranger;
    scene.actions[0]->setChecked(true);
    outsider.setChecked(true);
    for (XMLAction *action : { scene.actions[0].data(), scene.actions[1].data(), &outsider }) {
        connect(action, SIGNAL(toggling(bool &)), scene.group, SLOT(approveToggle(bool &)));
        bool approved = action == scene.actions[0];
        const bool expected = !approved;
        Q_EMIT action->toggling(approved);
        QCOMPARE(approved, expected);
    }
    connect(&stranger, SIGNAL(asked(bool &)), scene.group, SLOT(approveToggle(bool &)));
    bool approved[] = { false, false };
    Q_EMIT stranger.asked(approved[0]);
    scene.group->approveToggle(approved[1]);
    QVERIFY(approved[0] && approved[1]);
}

void tst_XMLActionGroup::destruction_data()
{
    QTest::addColumn<Step>("step");
    QTest::addColumn<QString>("members");  // null: the group is gone
    const auto row = [](const char *name, const char *members, const Step &step) {
        QTest::newRow(name) << step << str(members);
    };
    row("action", "02", [](Scene &s) { delete s.actions[1]; });
    row("all actions", "", [](Scene &s) {
        for (const QPointer<XMLAction> &action : s.actions) {
            delete action;
        }
    });
    row("group", nullptr, [](Scene &s) { delete s.group; });
    row("added twice", "12", [](Scene &s) {
        s.group->addAction(s.actions[0]);
        delete s.actions[0];
    });
    row("added twice, removed once", "12", [](Scene &s) {
        s.group->addAction(s.actions[0]);
        s.group->removeAction(s.actions[0]);
        delete s.actions[0];
    });
    row("in two groups", "12", [](Scene &s) {
        XMLActionGroup other(nullptr, "other");
        other.addAction(s.actions[0]);
        delete s.actions[0];
        QVERIFY(other.actions().isEmpty());
    });
    row("in its own toggled", "02", [](Scene &s) {
        s.onToggle(1, [&s] { delete s.actions[1]; });
        s.actions[1]->toggle();
    });
    row("in its own toggled, before the group hears", "12", [](Scene &s) {
        auto *action = new XMLAction;
        connect(action, &XMLAction::toggled, [action] { delete action; });
        delete std::exchange(s.actions[0], s.group->addAction(action));
        s.group->toggleAction(action);
    });
    row("destroyed, before the group hears", "12", [](Scene &s) {
        auto *action = new XMLAction;
        connect(action, &QObject::destroyed, [&s] {
            s.actions[1]->setChecked(true);
            QVERIFY(!s.group->checkedAction());
            QCOMPARE(s.group->actions().size(), 2);
        });
        delete std::exchange(s.actions[0], s.group->addAction(action));
        delete action;
    });
    row("in another's toggled", "1", [](Scene &s) {
        s.onToggle(0, [&s] {
            delete s.actions[2];
            delete s.actions[0];
        });
        s.actions[1]->toggle();
    });
    row("the sender", "02", [](Scene &s) {
        s.onToggle(0, [&s] { delete s.actions[1]; });
        s.actions[1]->toggle();
    });
    row("group inside updateActions", nullptr, [](Scene &s) {
        s.onToggle(0, [&s] { delete s.group; });
        s.actions[1]->toggle();
    });
    row("all inside updateActions", nullptr, [](Scene &s) {
        s.onToggle(0, [&s] {
            delete s.group;
            for (const QPointer<XMLAction> &action : s.actions) {
                delete action;
            }
        });
        s.actions[1]->toggle();
    });
    row("removed by its own signal", "02", [](Scene &s) {
        connect(s.actions[1], SIGNAL(toggled(bool)), s.group, SLOT(removeAction()));
        s.actions[1]->toggle();
    });
    row("removed inside updateActions", "0", [](Scene &s) {
        s.onToggle(0, [&s] {
            s.group->removeAction(s.actions[1]);
            s.group->removeAction(s.actions[2]);
        });
        s.actions[1]->toggle();
    });
    row("signals of a stranger", "012", [](Scene &s) {
        Stranger stranger;
        XMLAction outsider;
        outsider.setActionGroup(s.group);
        for (QObject *object :
            { static_cast<QObject *>(&stranger), static_cast<QObject *>(&outsider) }) {
            connect(object, SIGNAL(destroyed(QObject *)), s.group, SLOT(removeAction()));
        }
        connect(&stranger, SIGNAL(happened()), s.group, SLOT(removeAction()));
        connect(&outsider, SIGNAL(toggled(bool)), s.group, SLOT(removeAction()));
        Q_EMIT stranger.happened();
        outsider.toggle();
        QCOMPARE(outsider.actionGroup(), s.group.data());
    });
}

void tst_XMLActionGroup::destruction()
{
    QFETCH(Step, step);
    QFETCH(QString, members);
    Scene scene;
    step(scene);
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
