#include "fuzz.h"

#include "xmlaction.h"
#include "xmlactiongroup.h"

#include <QPointer>

#include <algorithm>
#include <vector>

// Calls on groups and actions, also from inside the actions' signals, compared with groups that are
// lists of actions. Which of them are checked is left to the tests.

namespace {

constexpr unsigned ACTIONS = 4;

using Actions = std::vector<XMLAction *>;

// A group and its model.
struct Group
{
    QPointer<XMLActionGroup> group;
    Actions members;
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
            group = { new XMLActionGroup(nullptr, nullptr), {} };
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
        }
        delete action;
    }

    void add(Group &group, QPointer<XMLAction> &action)
    {
        require(group.group->addAction(action) == action, "an action that is added is returned");
        require(action->actionGroup() == group.group, "and knows its group");
        group.members.push_back(action);
    }

    void remove(Group &group, QPointer<XMLAction> &action)
    {
        group.group->removeAction(action);
        require(!action->actionGroup(), "what was removed has no group");
        const auto member = std::find(group.members.begin(), group.members.end(), action);
        if (member != group.members.end()) {
            group.members.erase(member);
        }
    }

    void toggle(Group &, QPointer<XMLAction> &action)
    {
        bytes.flag() ? action->setChecked(bytes.flag()) : action->toggle();
    }

    void toggleMember(Group &group, QPointer<XMLAction> &action)
    {
        group.group->toggleAction(action);
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
