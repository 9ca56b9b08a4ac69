#include "xmlaction.h"

#include "packetitem_p.h"
#include "text_p.h"
#include "xmlpacketable.h"

#include <QScopeGuard>
#include <QtAlgorithms>

#include <cstdio>
#include <type_traits>

using namespace TQXmlInternal;

namespace {

// A property: its key, what the getter returns when it is absent, and the base of its text.
template<typename T>
struct Property
{
    const char *key;
    T absent;
    int base = 10;

    QString name() const { return QString::fromLatin1(key); }
};

constexpr Property<bool> VISIBLE { "visible", true };
constexpr Property<bool> SHOW_NEWEST_PAGE { "show_newest_page", false };
constexpr Property<bool> ENABLED { "enabled", true };
constexpr Property<bool> CHECKABLE { "checkable", false };
constexpr Property<bool> CHECKED { "checked", false };
constexpr Property<bool> SELECTED { "selected", false };
constexpr Property<bool> NEED_UPDATE { "need_update", false };
constexpr Property<bool> EXCLUDE_PUBLICATIONS { "exclude_publications", false };
constexpr Property<bool> PAINT_PIXMAP { "paint_pixmap", false };
constexpr Property<bool> SORT_ASCENDING { "sort_ascending", false };
constexpr Property<int> PAGE_NUMBER { "pagenum", 0 };
constexpr Property<unsigned int> CHANNEL_ID { "channel_id", 0, 16 };
constexpr Property<int> INDEX { "index", 0 };
constexpr Property<int> X { "x", 0 };
constexpr Property<int> Y { "y", 0 };
constexpr Property<double> X_DOUBLE { "x_double", 0.0 };
constexpr Property<double> Y_DOUBLE { "y_double", 0.0 };
constexpr Property<unsigned int> COLOUR { "colour", 0xffffff, 16 };
constexpr Property<int> SORT_TYPE { "sort_type", 0 };
constexpr Property<unsigned int> TQKEY_KEY { "tqkey_key", 0, 16 };
constexpr Property<unsigned int> TQKEY_HKEY { "tqkey_hkey", 0, 16 };

// Properties without a default: an absent list is empty, an absent text a null string.
constexpr int LIST_BASE = 16;
const QString TQKEY_KEY_LIST = QStringLiteral("tqkey_key_list");
const QString TQKEY_HKEY_LIST = QStringLiteral("tqkey_hkey_list");
const QString JOB_IDS = QStringLiteral("jobids");
const QString TQJOB_IDS = QStringLiteral("tqjobids");
const QString ORG_NAME = QStringLiteral("org_name");

// Attributes; all other values are properties.
const QString NAME = QStringLiteral("name");
const QString TYPE = QStringLiteral("type");
const QString ORIGINATOR = QStringLiteral("originator");

template<typename T>
void set(QDomElement &e, const Property<T> &property, T value)
{
    if constexpr (std::is_same_v<T, unsigned int>) {
        XMLObject::setProperty(e, property.name(), value, property.base);
    } else {
        XMLObject::setProperty(e, property.name(), value);
    }
}

template<typename T>
bool has(const QDomElement &e, const Property<T> &property)
{
    return XMLObject::hasProperty(e, property.name());
}

template<typename T>
T get(const QDomElement &e, const Property<T> &property)
{
    const QString name = property.name();
    if (!XMLObject::hasProperty(e, name)) {
        return property.absent;
    }
    if constexpr (std::is_same_v<T, bool>) {
        return XMLObject::getPropertyBool(e, name);
    } else if constexpr (std::is_same_v<T, double>) {
        return XMLObject::getPropertyDouble(e, name);
    } else if constexpr (std::is_same_v<T, unsigned int>) {
        return XMLObject::getPropertyUInt(e, name, property.base);
    } else {
        return XMLObject::getPropertyInt(e, name);
    }
}

int firstOr0(const QList<int> &list) { return list.isEmpty() ? 0 : list.first(); }

}  // namespace

XMLAction::XMLAction() : XMLObject(XMLOBJECT_ACTION) {}

XMLAction::XMLAction(const QString &name, int type, int originator) : XMLAction()
{
    setName(name);
    setType(type);
    setOriginator(originator);
}

XMLAction::~XMLAction() = default;

void XMLAction::setVisible(QDomElement &e, bool visible) { set(e, VISIBLE, visible); }
void XMLAction::setVisible(bool visible) { setVisible(element(), visible); }
bool XMLAction::hasVisible() const { return has(element(), VISIBLE); }
bool XMLAction::getVisible() const { return get(element(), VISIBLE); }
void XMLAction::setShowNewestPage(bool show) { set(element(), SHOW_NEWEST_PAGE, show); }
bool XMLAction::hasShowNewestPage() const { return has(element(), SHOW_NEWEST_PAGE); }
bool XMLAction::getShowNewestPage() const { return get(element(), SHOW_NEWEST_PAGE); }
bool XMLAction::hasEnabled() const { return has(element(), ENABLED); }
bool XMLAction::isEnabled() const { return get(element(), ENABLED); }
void XMLAction::setCheckable(bool checkable) { set(element(), CHECKABLE, checkable); }
bool XMLAction::hasCheckable() const { return has(element(), CHECKABLE); }
bool XMLAction::isCheckable() const { return get(element(), CHECKABLE); }
bool XMLAction::hasChecked() const { return has(element(), CHECKED); }
bool XMLAction::isChecked() const { return get(element(), CHECKED); }
void XMLAction::setSelected(bool selected) { set(element(), SELECTED, selected); }
bool XMLAction::hasSelected() const { return has(element(), SELECTED); }
bool XMLAction::isSelected() const { return get(element(), SELECTED); }
void XMLAction::setNeedUpdate(bool needed) { set(element(), NEED_UPDATE, needed); }
bool XMLAction::hasNeedUpdate() const { return has(element(), NEED_UPDATE); }
bool XMLAction::getNeedUpdate() const { return get(element(), NEED_UPDATE); }
void XMLAction::setExcludePublications(bool exclude)
{
    set(element(), EXCLUDE_PUBLICATIONS, exclude);
}
bool XMLAction::hasExcludePublications() const { return has(element(), EXCLUDE_PUBLICATIONS); }
bool XMLAction::getExcludePublications() const { return get(element(), EXCLUDE_PUBLICATIONS); }
void XMLAction::setPaintPixmap(bool paint) { set(element(), PAINT_PIXMAP, paint); }
bool XMLAction::hasPaintPixmap() const { return has(element(), PAINT_PIXMAP); }
bool XMLAction::getPaintPixmap() const { return get(element(), PAINT_PIXMAP); }
void XMLAction::setSortAscending(bool ascending) { set(element(), SORT_ASCENDING, ascending); }
bool XMLAction::hasSortAscending() const { return has(element(), SORT_ASCENDING); }
bool XMLAction::getSortAscending() const { return get(element(), SORT_ASCENDING); }

void XMLAction::setName(QDomElement &e, const QString &name) { setAttribute(e, NAME, name); }
void XMLAction::setName(const QString &name) { setOwnAttribute(NAME, name); }
QString XMLAction::getName() const { return getAttribute(element(), NAME); }
void XMLAction::setType(int type) { setOwnAttribute(TYPE, numberText(type, 10)); }
int XMLAction::getType() const { return getAttributeInt(element(), TYPE); }
void XMLAction::setOriginator(int originator)
{
    setOwnAttribute(ORIGINATOR, numberText(originator, 10));
}
int XMLAction::getOriginator() const { return getAttributeInt(element(), ORIGINATOR); }

void XMLAction::setOrgName(QDomElement &e, const QString &orgName)
{
    setProperty(e, ORG_NAME, orgName);
}
void XMLAction::setOrgName(const QString &orgName) { setOrgName(element(), orgName); }
QString XMLAction::getOrgName() const { return getProperty(element(), ORG_NAME); }

void XMLAction::setTQKEY(const TQKEY_ELEMENT &key)
{
    set(element(), TQKEY_HKEY, key.hkey);
    set(element(), TQKEY_KEY, key.key);
}

bool XMLAction::hasTQKEY() const { return has(element(), TQKEY_HKEY) && has(element(), TQKEY_KEY); }

TQKEY_ELEMENT XMLAction::getTQKEY() const
{
    return { get(element(), TQKEY_KEY), get(element(), TQKEY_HKEY) };
}

void XMLAction::setTQKEYList(const QList<TQKEY_ELEMENT *> &keys)
{
    QList<unsigned int> keyWords;
    QList<unsigned int> hkeyWords;
    for (const TQKEY_ELEMENT *key : keys) {
        if (key) {
            keyWords.append(key->key);
            hkeyWords.append(key->hkey);
        }
    }
    setProperty(element(), TQKEY_HKEY_LIST, hkeyWords, LIST_BASE);
    setProperty(element(), TQKEY_KEY_LIST, keyWords, LIST_BASE);
}

bool XMLAction::hasTQKEYList() const
{
    return hasProperty(element(), TQKEY_HKEY_LIST) && hasProperty(element(), TQKEY_KEY_LIST);
}

QList<TQKEY_ELEMENT *> XMLAction::getTQKEYList() const
{
    const auto keyWords = getPropertyULongList(element(), TQKEY_KEY_LIST, LIST_BASE);
    const auto hkeyWords = getPropertyULongList(element(), TQKEY_HKEY_LIST, LIST_BASE);
    QList<TQKEY_ELEMENT *> keys;
    const int count = int(qMin(keyWords.size(), hkeyWords.size()));
    keys.reserve(count);
    auto guard = qScopeGuard([&keys] { qDeleteAll(keys); });
    for (int i = 0; i < count; ++i) {
        keys.append(new TQKEY_ELEMENT { keyWords.at(i), hkeyWords.at(i) });
    }
    guard.dismiss();
    return keys;
}

void XMLAction::setJobIDs(const QList<int> &ids)
{
    setProperty(element(), JOB_IDS, ids, LIST_BASE);
}
void XMLAction::setJobID(int id) { setJobIDs({ id }); }
bool XMLAction::hasJobIDs() const { return hasProperty(element(), JOB_IDS); }
bool XMLAction::hasJobID() const { return hasJobIDs(); }
QList<int> XMLAction::getJobIDs() const
{
    return getPropertyLongList(element(), JOB_IDS, LIST_BASE);
}
int XMLAction::getJobID() const { return firstOr0(getJobIDs()); }

void XMLAction::setTQJobIDs(const QList<int> &ids)
{
    setProperty(element(), TQJOB_IDS, ids, LIST_BASE);
}
void XMLAction::setTQJobID(int id) { setTQJobIDs({ id }); }
bool XMLAction::hasTQJobIDs() const { return hasProperty(element(), TQJOB_IDS); }
bool XMLAction::hasTQJobID() const { return hasTQJobIDs(); }
QList<int> XMLAction::getTQJobIDs() const
{
    return getPropertyLongList(element(), TQJOB_IDS, LIST_BASE);
}
int XMLAction::getTQJobID() const { return firstOr0(getTQJobIDs()); }

void XMLAction::setPageNumber(int page) { set(element(), PAGE_NUMBER, page); }
bool XMLAction::hasPageNumber() const { return has(element(), PAGE_NUMBER); }
int XMLAction::getPageNumber() const { return get(element(), PAGE_NUMBER); }
void XMLAction::setChannelID(unsigned int id) { set(element(), CHANNEL_ID, id); }
bool XMLAction::hasChannelID() const { return has(element(), CHANNEL_ID); }
unsigned int XMLAction::getChannelID() const { return get(element(), CHANNEL_ID); }
void XMLAction::setIndex(int index) { set(element(), INDEX, index); }
bool XMLAction::hasIndex() const { return has(element(), INDEX); }
int XMLAction::getIndex() const { return get(element(), INDEX); }
void XMLAction::setX(int x) { set(element(), X, x); }
bool XMLAction::hasX() const { return has(element(), X); }
int XMLAction::getX() const { return get(element(), X); }
void XMLAction::setY(int y) { set(element(), Y, y); }
bool XMLAction::hasY() const { return has(element(), Y); }
int XMLAction::getY() const { return get(element(), Y); }
void XMLAction::setXDouble(double x) { set(element(), X_DOUBLE, x); }
bool XMLAction::hasXDouble() const { return has(element(), X_DOUBLE); }
double XMLAction::getXDouble() const { return get(element(), X_DOUBLE); }
void XMLAction::setYDouble(double y) { set(element(), Y_DOUBLE, y); }
bool XMLAction::hasYDouble() const { return has(element(), Y_DOUBLE); }
double XMLAction::getYDouble() const { return get(element(), Y_DOUBLE); }
void XMLAction::setColour(unsigned int colour) { set(element(), COLOUR, colour); }
bool XMLAction::hasColour() const { return has(element(), COLOUR); }
unsigned int XMLAction::getColour() const { return get(element(), COLOUR); }
void XMLAction::setSortType(int type) { set(element(), SORT_TYPE, type); }
bool XMLAction::hasSortType() const { return has(element(), SORT_TYPE); }
int XMLAction::getSortType() const { return get(element(), SORT_TYPE); }

void XMLAction::setRect(int x, int y, int w, int h) { m_rect = QRect(x, y, w, h); }
QRect XMLAction::rect() const { return m_rect; }
void XMLAction::setTextRect(int x, int y, int w, int h) { m_textRect = QRect(x, y, w, h); }
QRect XMLAction::textRect() const { return m_textRect; }

void XMLAction::setActionGroup(XMLActionGroup *group) { m_actionGroup = group; }
XMLActionGroup *XMLAction::actionGroup() const { return m_actionGroup; }

QDomElement XMLAction::append(TQPacketable &item)
{
    if (element().isNull()) {
        return QDomElement();
    }
    return PacketItem(item, false).appendTo(element());
}

QDomElement XMLAction::append(XMLPacketable &item)
{
    return element().isNull() ? QDomElement() : element().appendChild(item.getNode()).toElement();
}

void XMLAction::removeNodesOfType(XMLOBJECT_TYPE t) { XMLObject::removeNodesOfType(element(), t); }

bool XMLAction::hasNodesOfType(XMLOBJECT_TYPE t) const
{
    return XMLObject::hasNodesOfType(element(), t);
}

int XMLAction::getNodesOfType(XMLOBJECT_TYPE t, std::list<QDomNode> &out) const
{
    return XMLObject::getNodesOfType(element(), t, out);
}

void XMLAction::print(const QString &title) const
{
    std::printf("-- %s --\n%s\n", title.toUtf8().constData(), toString().toUtf8().constData());
}

void XMLAction::toggle() { setChecked(!isChecked()); }

void XMLAction::setChecked(bool checked)
{
    set(element(), CHECKED, checked);
    Q_EMIT toggled(isChecked());  // the action may be gone afterwards
}

void XMLAction::setEnabled(bool enabled) { set(element(), ENABLED, enabled); }
