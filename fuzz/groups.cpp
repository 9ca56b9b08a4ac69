#include "fuzz.h"

#include "xmlaction.h"
#include "xmlactiongroup.h"

#include <QPointer>

#include <algorithm>
#include <map>
#include <set>
#include <vector>

// Calls on groups and actions, also from inside the actions' signals, compared with groups that are
// lists of actions.

namespace {

constexpr unsigned ACTIONS = 4;

using Actions = std::vector<XMLAction *>;

bool contains(const Actions &actions, const XMLAction *action)
{
    return std::count(actions.begin(), actions.end(), action) > 0;
}

// A group and its model.
struct Group
{
    QPointer<XMLActionGroup> group;
    Actions members;
    std::set<XMLAction *> heard;  // members whose signals reach the group
};

class World : public Program
{
public:
    using Program::Program;
    ~World() override
    {
        delete m_groups[0].group;
        delete m_groups[1].group;
        for (const QPointer<XMLAction> &action : m_actions) {
            delete action;
        }
    }

private:
    void step() override
    {
        using Step = void (World::*)(Group &, QPointer<XMLAction> &);
        static constexpr Step STEPS[] = { &World::dropGroup, &World::dropAction, &World::add,
            &World::add, &World::remove, &World::toggle, &World::toggle, &World::toggleMember,
            &World::select };
        const Step next = bytes.oneOf(STEPS);
        Group &group = m_groups[bytes.below(2)];
        QPointer<XMLAction> &action = m_actions[bytes.below(ACTIONS)];
        if (!group.group) {
            group = { new XMLActionGroup(nullptr, nullptr), {}, {} };
        }
        if (!action) {
            action = new XMLAction(QStringLiteral("show"), 0, 0);
            QObject::connect(action, &XMLAction::toggled, action, [this] { callBack(); });
            QObject::connect(action, &QObject::destroyed, action, [this] { callBack(); });
        }
        (this->*next)(group, action);
        check();
    }

    void check() const
    {
        for (const Group &each : m_groups) {
            if (each.group) {
                const QList<XMLAction *> listed = each.group->actions();
                require(Actions(listed.begin(), listed.end()) == each.members,
                    "a group lists its living members");
                const auto selected = std::find_if(each.members.begin(), each.members.end(),
                    [](const XMLAction *member) { return member->isSelected(); });
                require(each.group->checkedAction() ==
                        (selected == each.members.end() ? nullptr : *selected),
                    "the first selected member is the checked one");
            }
        }
    }

    void dropGroup(Group &group, QPointer<XMLAction> &)
    {
        delete group.group;
        group = {};
    }

    void dropAction(Group &, QPointer<XMLAction> &action)
    {
        for (Group &each : m_groups) {
            each.members.erase(std::remove(each.members.begin(), each.members.end(), action.data()),
                each.members.end());
            each.heard.erase(action);
        }
        delete action;
    }

    void add(Group &group, QPointer<XMLAction> &action)
    {
        require(group.group->addAction(action) == action, "an action that is added is returned");
        require(action->actionGroup() == group.group, "and knows its group");
        group.members.push_back(action);
        group.heard.insert(action);
    }

    void remove(Group &group, QPointer<XMLAction> &action)
    {
        group.group->removeAction(action);
        require(!action->actionGroup(), "what was removed has no group");
        const auto member = std::find(group.members.begin(), group.members.end(), action);
        if (member != group.members.end()) {
            group.members.erase(member);
        }
        group.heard.erase(action);
    }

    // Makes a call that toggles an action, or none. What is checked afterwards is certain at the
    // top and where no slot makes further calls: a group that is unchecking its members hears of
    // no toggles. An action that is in both groups lets a toggle come back to where it began.
    template<typename Call>
    void expectState(XMLAction *toggled, bool checked, Call call)
    {
        std::map<XMLAction *, bool> expected;
        for (XMLAction *action : m_actions) {
            if (action) {
                expected[action] = action->isChecked();
            }
        }
        bool isShared = false;
        for (const Group &each : m_groups) {
            for (XMLAction *member : each.members) {
                expected[member] = expected[member] && each.heard.count(toggled) == 0;
                isShared = isShared || (&each != m_groups && contains(m_groups->members, member));
            }
        }
        expected[toggled] = checked;
        if (runsAlone(call) && isAtTop() && !isShared) {
            for (const auto &[action, state] : expected) {
                require(!action || action->isChecked() == state, "one of a group is checked");
            }
        }
    }

    void toggle(Group &, QPointer<XMLAction> &action)
    {
        const bool checked = bytes.flag();
        if (checked == action->isChecked()) {
            expectState(action, checked, [&action, checked] { action->setChecked(checked); });
        } else {
            expectState(action, checked, [&action] { action->toggle(); });
        }
    }

    void toggleMember(Group &group, QPointer<XMLAction> &action)
    {
        const bool isToggled = contains(group.members, action) && !action->isChecked();
        expectState(isToggled ? action.data() : nullptr, true,
            [&group, &action] { group.group->toggleAction(action); });
    }

    void select(Group &, QPointer<XMLAction> &action) { action->setSelected(bytes.flag()); }

    QPointer<XMLAction> m_actions[ACTIONS];
    Group m_groups[2];
};

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    World(data, size).run();
    return 0;
}
