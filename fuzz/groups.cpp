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

constexpr unsigned ACTIONS = 5;
constexpr unsigned GROUPS = 2;
constexpr unsigned NESTING = 12;  // signals, one inside another, that make further calls
constexpr unsigned NESTED_STEPS = 3;

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
    std::set<XMLAction *> heard;  // members whose toggles reach the group
};

class World
{
public:
    World(const uint8_t *data, size_t size) : m_bytes(data, size) {}
    ~World();
    void run()
    {
        while (!m_bytes.isEmpty()) {
            step();
        }
    }

private:
    void step();
    void callBack();
    void check() const;

    void makeAction();
    void deleteAction();
    void setChecked();
    void select();
    void deleteGroup();
    void add();
    void remove();
    void toggleMember();
    void askGroup();
    void signalToGroup();

    XMLAction *action() { return m_actions[m_bytes.below(ACTIONS)]; }
    Group &group();
    void forget(XMLAction *action);
    void removeFrom(Group &group, XMLAction *action);
    template<typename Call>
    void expectState(XMLAction *toggled, bool checked, Call call);

    Bytes m_bytes;
    unsigned m_nesting = 0;
    unsigned m_steps = 0;
    QPointer<XMLAction> m_actions[ACTIONS];
    Group m_groups[GROUPS];
    std::map<XMLAction *, XMLActionGroup *> m_groupOf;  // as the action says
};

World::~World()
{
    for (const Group &each : m_groups) {
        delete each.group;
    }
    for (const QPointer<XMLAction> &each : m_actions) {
        delete each;
    }
}

void World::step()
{
    using Step = void (World::*)();
    static constexpr Step STEPS[] = { &World::makeAction, &World::makeAction, &World::deleteAction,
        &World::setChecked, &World::setChecked, &World::select, &World::deleteGroup, &World::add,
        &World::add, &World::remove, &World::toggleMember, &World::askGroup,
        &World::signalToGroup };
    ++m_steps;
    (this->*STEPS[m_bytes.below(std::size(STEPS))])();
    check();
}

void World::callBack()
{
    if (m_nesting < NESTING) {
        ++m_nesting;
        for (unsigned steps = m_bytes.below(NESTED_STEPS + 1); steps > 0; --steps) {
            step();
        }
        --m_nesting;
    }
}

void World::check() const
{
    for (const Group &each : m_groups) {
        if (each.group) {
            const Actions &members = each.members;
            const QList<XMLAction *> listed = each.group->actions();
            require(Actions(listed.begin(), listed.end()) == members,
                "a group lists its living members");
            const auto selected = std::find_if(members.begin(), members.end(),
                [](const XMLAction *member) { return member->isSelected(); });
            require(
                each.group->checkedAction() == (selected == members.end() ? nullptr : *selected),
                "the first selected member is the checked one");
        }
    }
    for (const auto &[action, group] : m_groupOf) {
        require(action->actionGroup() == group, "an action knows its group");
    }
}

Group &World::group()
{
    Group &chosen = m_groups[m_bytes.below(GROUPS)];
    if (!chosen.group) {
        chosen = { new XMLActionGroup(nullptr, nullptr), {}, {} };
    }
    return chosen;
}

void World::makeAction()
{
    QPointer<XMLAction> &slot = m_actions[m_bytes.below(ACTIONS)];
    if (!slot) {
        slot = new XMLAction(QStringLiteral("show"), 0, 0);
        m_groupOf[slot] = nullptr;
        QObject::connect(slot, &XMLAction::toggled, slot, [this] { callBack(); });
        if (m_bytes.flag()) {
            QObject::connect(slot, &QObject::destroyed, slot, [this] { callBack(); });
        }
    }
}

void World::forget(XMLAction *action)
{
    for (Group &each : m_groups) {
        each.members.erase(
            std::remove(each.members.begin(), each.members.end(), action), each.members.end());
        each.heard.erase(action);
    }
    m_groupOf.erase(action);
}

void World::deleteAction()
{
    if (XMLAction *const chosen = action()) {
        forget(chosen);
        delete chosen;
    }
}

// Makes a call that toggles an action, or none. What is checked afterwards is certain at the top
// and where no slot makes further calls: a group that is unchecking its members hears of no
// toggles. An action that is in both groups lets a toggle come back to where it began.
template<typename Call>
void World::expectState(XMLAction *toggled, bool checked, Call call)
{
    const Actions &first = m_groups[0].members;
    const bool isShared = std::any_of(first.begin(), first.end(),
        [this](const XMLAction *member) { return contains(m_groups[1].members, member); });
    std::map<XMLAction *, bool> expected;
    for (auto entry = m_groupOf.begin(); entry != m_groupOf.end() && !isShared; ++entry) {
        expected[entry->first] = entry->first->isChecked();
    }
    for (const Group &each : m_groups) {
        for (XMLAction *member : each.members) {
            if (each.group && each.heard.count(toggled) > 0) {
                expected[member] = false;
            }
        }
    }
    expected.erase(toggled);
    if (toggled && !isShared) {
        expected[toggled] = checked;
    }
    const unsigned steps = m_steps;
    call();
    const bool isCertain = m_nesting == 0 && m_steps == steps;
    for (const auto &[action, state] : expected) {
        require(!isCertain || action->isChecked() == state,
            "the others in the group are unchecked, and nobody else");
    }
}

void World::setChecked()
{
    XMLAction *const chosen = action();
    if (!chosen) {
        return;
    }
    if (m_bytes.flag()) {
        expectState(chosen, !chosen->isChecked(), [chosen] { chosen->toggle(); });
    } else {
        const bool checked = m_bytes.flag();
        expectState(chosen, checked, [chosen, checked] { chosen->setChecked(checked); });
    }
}

void World::select()
{
    if (XMLAction *const chosen = action()) {
        chosen->setSelected(m_bytes.flag());
    }
}

void World::deleteGroup() { delete group().group; }

void World::add()
{
    Group &chosen = group();
    XMLAction *const added = action();
    require(chosen.group->addAction(added) == added, "an action that is added is returned");
    if (added) {
        chosen.members.push_back(added);
        chosen.heard.insert(added);
        m_groupOf[added] = chosen.group;
    }
}

void World::removeFrom(Group &from, XMLAction *removed)
{
    const auto member = std::find(from.members.begin(), from.members.end(), removed);
    if (member != from.members.end()) {
        from.members.erase(member);
    }
    from.heard.erase(removed);
    m_groupOf[removed] = nullptr;
}

void World::remove()
{
    Group &chosen = group();
    if (XMLAction *const removed = action()) {
        chosen.group->removeAction(removed);
        removeFrom(chosen, removed);
    }
}

void World::toggleMember()
{
    const Group &chosen = group();
    XMLAction *const toggled = action();
    const bool isToggled = toggled && contains(chosen.members, toggled) && !toggled->isChecked();
    expectState(isToggled ? toggled : nullptr, true,
        [&chosen, toggled] { chosen.group->toggleAction(toggled); });
}

void World::askGroup()
{
    const Group &chosen = group();
    if (XMLAction *const asking = action()) {
        const bool isMarked = contains(chosen.members, asking) && asking->isChecked();
        bool isApproved = isMarked;
        const auto connection = QObject::connect(
            asking, &XMLAction::toggling, chosen.group, &XMLActionGroup::approveToggle);
        Q_EMIT asking->toggling(isApproved);
        QObject::disconnect(connection);
        require(isApproved == !isMarked, "only a checked member may not be toggled");
    }
}

// Slots that look at their sender: a member, a stranger, or nobody, which is certain at the top.
void World::signalToGroup()
{
    Group &chosen = group();
    XMLAction *const sender = action();
    const auto removeSender = qOverload<>(&XMLActionGroup::removeAction);
    QObject stranger;
    switch (m_bytes.below(4)) {
    case 0:
        if (m_nesting == 0) {
            expectState(nullptr, false, [&chosen] { chosen.group->updateActions(); });
            chosen.group->removeAction();
            chosen.group->removeAction(nullptr);
        }
        break;
    case 1:
        QObject::connect(&stranger, &QObject::objectNameChanged, chosen.group, removeSender);
        stranger.setObjectName(QStringLiteral("stranger"));
        break;
    default:
        if (sender) {
            bool isApproved = false;
            const auto connection =
                QObject::connect(sender, &XMLAction::toggling, chosen.group, removeSender);
            Q_EMIT sender->toggling(isApproved);
            QObject::disconnect(connection);
            if (contains(chosen.members, sender)) {
                removeFrom(chosen, sender);
            }
        }
        break;
    }
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    makeApplication();
    World(data, size).run();
    return 0;
}
