#include "xmlactiongroup.h"

#include "util.h"
#include "xmlaction.h"

#include <algorithm>
#include <ctime>
#include <vector>

namespace {

// A group, X, with the actions 0 to 2, of which 0 is in a second group, too. Any step may delete
// any of them.
struct Scene
{
    Scene() : group(new XMLActionGroup(nullptr, "g")), other(nullptr, "other")
    {
        for (int i = 0; i < 3; ++i) {
            auto action = new XMLAction;
            actions += action;
            const auto react = [this, i](const char *what) {
                run(reactions.take(str(what) + QString::number(i)));
            };
            QObject::connect(action, &XMLAction::toggled, [react] { react("early"); });
            QObject::connect(action, &QObject::destroyed, [react] { react("gone"); });
            if (i == 0) {
                other.addAction(action);
            }
            group->addAction(action);
            QObject::connect(action, &XMLAction::toggled, [this, react](bool on) {
                log += QString::number(on);
                react("late");
            });
        }
    }
    ~Scene() { run(str("X ~0 ~1 ~2")); }

    // Steps as words: what is done, and the action's number.
    void run(const QString &words)
    {
        for (const QString &word : words.split(QLatin1Char(' '))) {
            XMLAction *action = actions[word.mid(1).toInt()];
            const QMap<QString, std::function<void()>> steps {
                { str("+"), [&] { group->addAction(action); } },
                { str("-"), [&] { group->removeAction(action); } },
                { str("~"), [&] { delete action; } },
                { str("X"), [&] { delete group; } },
                { str("c"), [&] { action->setChecked(true); } },
                { str("u"), [&] { action->setChecked(false); } },
                { str("s"), [&] { action->setSelected(true); } },
                { str("t"), [&] { action->toggle(); } },
                { str("T"), [&] { group->toggleAction(action); } },
                { str("m"), [&] { log += state(); } },
            };
            steps.value(word.left(1), [] {})();
        }
    }
    // Numbers of the members, '*' behind the selected one; of all actions whether they are checked,
    // '-' for one that is gone.
    QString state() const
    {
        QString text;
        for (XMLAction *member : group ? group->actions() : QList<XMLAction *>()) {
            text += QString::number(actions.indexOf(member));
            text += str(member == group->checkedAction() ? "*" : "");
        }
        text += QLatin1Char(':');
        for (const QPointer<XMLAction> &action : actions) {
            text += action ? QString::number(action->isChecked()) : str("-");
        }
        return text;
    }

    QPointer<XMLActionGroup> group;
    XMLActionGroup other;
    QList<QPointer<XMLAction>> actions;
    QMap<QString, QString> reactions;  // steps by event, see Row
    QString log;  // what toggled() said
};

struct Row
{
    const char *name;
    // Of action 0 or 1: "early0" is its toggled() before the group hears of it, "late0" after
    // that, "gone0" its end before the group hears.
    const char *event;
    const char *reaction;
    const char *steps;
    const char *state;
    const char *log;
};
constexpr Row UPDATES[] = {
    { "one at a time", "", "", "c0 T1", "012:010", "001001" },
    { "checked already", "", "", "c0 T0 t2", "012:001", "001001" },
    { "unchecked", "", "", "c0 u0", "012:000", "001000" },
    { "changed meanwhile", "late0", "c2", "t1", "012:010", "0101" },
    { "selected", "", "", "s2 m s1", "01*2:000", "012*:000" },
    { "listed twice, then left", "", "", "+0 -0 c1 c0 m -0", "12:110", "0011120:110" },
};
// What dies, or leaves, at the worst moment.
constexpr Row DEATHS[] = {
    { "in its own toggled", "late1", "~1", "t1", "02:0-0", "001" },
    { "in its own, before the group hears", "early1", "~1", "T1", "02:0-0", "" },
    { "destroyed, before the group hears", "gone0", "c1 m", "~0", "12:-10", "0112:-10" },
    { "added twice, removed once", "", "", "+0 -0 ~0", "12:-00", "" },
    { "in another's toggled", "late0", "~2 ~0", "t1", "1:-1-", "01" },
    { "all in another's toggled", "late0", "X ~0 ~1 ~2", "t1", ":---", "0" },
    { "removed in another's toggled", "late0", "-1 -2", "t1", "0:010", "001" },
};

}  // namespace

class tst_XMLActionGroup : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void updates_data() { addRows(UPDATES); }
    void updates();
    void lifetime_data();
    void lifetime();
    void strangers();
    void manyMembers();
    void signalsAndSlots();
};

void tst_XMLActionGroup::updates()
{
    const auto &row = currentRow<Row>();
    Scene scene;
    connect(scene.group, &XMLActionGroup::triggered, [] { QFAIL("emitted by the library"); });
    scene.reactions[str(row.event)] = str(row.reaction);
    scene.run(str(row.steps));
    QCOMPARE(scene.state(), str(row.state));
    QCOMPARE(scene.log, str(row.log));
    QCOMPARE(scene.other.actions().size(), scene.actions[0] ? 1 : 0);
}

void tst_XMLActionGroup::lifetime_data()
{
    addRows(DEATHS);
    QTest::newRow("every order") << quintptr(0);
}

// The rows; and group and actions in every order, one by one and all inside of a signal.
void tst_XMLActionGroup::lifetime()
{
    QFETCH(quintptr, row);
    if (row != 0) {
        return updates();
    }
    const char *const events[][2] = { { "none", "" }, { "early0", "t0" }, { "late0", "c1" },
        { "late1", "T1" }, { "gone0", "~0" } };
    for (const auto &[event, trigger] : events) {
        QStringList deaths = { str("X"), str("~0"), str("~1"), str("~2") };
        do {
            Scene scene;
            scene.run(str("+1 c2"));
            scene.reactions[str(event)] = deaths.join(QLatin1Char(' '));
            scene.run(str(trigger));
            QCOMPARE(scene.state(), str(*trigger ? ":---" : "0121:001"));
            for (const QString &death : deaths) {
                scene.run(death);
                scene.run(scene.group && scene.actions[1] ? str("u1 T1") : QString());
            }
            QCOMPARE(scene.state(), str(":---"));
        } while (std::next_permutation(deaths.begin(), deaths.end()));
    }
}

// Signals of others than members, and calls without any.
void tst_XMLActionGroup::strangers()
{
    Scene scene;
    XMLActionGroup &group = *scene.group;
    XMLAction *const first = scene.actions[0];
    XMLAction outsider;
    outsider.setActionGroup(&group);  // which is not to be a member
    first->setChecked(true);
    for (XMLAction *action : { first, scene.actions[1].data(), &outsider }) {
        connect(action, SIGNAL(toggling(bool &)), &group, SLOT(approveToggle(bool &)));
        bool approved = action == first;
        Q_EMIT action->toggling(approved);
        QCOMPARE(approved, action != first);
    }
    bool approved = false;
    group.approveToggle(approved);
    QObject other;
    for (QObject *stranger : { static_cast<QObject *>(&outsider), &other }) {
        connect(stranger, SIGNAL(objectNameChanged(QString)), &group, SLOT(removeAction()));
        stranger->setObjectName(str("x"));
    }
    group.removeAction();
    group.removeAction(nullptr);
    group.updateActions();
    group.toggleAction(nullptr);
    group.toggleAction(&outsider);
    QVERIFY(approved && !outsider.isChecked() && outsider.actionGroup() == &group);
    QVERIFY(!group.addAction(nullptr));
    QCOMPARE(scene.state(), str("012:100"));
    connect(first, SIGNAL(toggled(bool)), &group, SLOT(removeAction()));
    QCOMPARE(first->actionGroup(), &group);
    first->toggle();
    QVERIFY(!first->actionGroup());
    QCOMPARE(scene.state(), str("12:000"));
    // One that dies is no action any more.
    XMLAction *const dying = scene.actions[2];
    connect(dying, &QObject::destroyed, &other, [&] { group.removeAction(dying); });
    delete dying;
    QCOMPARE(scene.state(), str("1:00-"));
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
