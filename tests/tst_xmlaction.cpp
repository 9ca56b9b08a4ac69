#include "xmlaction.h"

#include "tqpacketable.h"
#include "util.h"
#include "xmlpacketable.h"

namespace {

// A value: absent, set, and present but unreadable, which reads as 0 or false.
template<typename T>
void isStored(const char *key, void (XMLAction::*set)(T), bool (XMLAction::*has)() const,
    T (XMLAction::*get)() const, T absent, T value, const char *text)
{
    XMLAction action;
    const auto shows = [&](bool isPresent, T expected) {
        QVERIFY2((action.*has)() == isPresent, key);
        QVERIFY2((action.*get)() == expected, key);
    };
    shows(false, absent);
    (action.*set)(value);
    shows(true, value);
    const QString form = str("<action><%1>%2</%1></action>");
    QCOMPARE(xmlOf(action.getNodeConst()), form.arg(str(key), str(text)));
    action.setNode(Xml(form.arg(str(key), str("?"))).root);
    shows(true, T());
    action.setNode(QDomElement());
    (action.*set)(value);
    shows(false, absent);
}

QStringList textOf(const QList<TQKEY_ELEMENT *> &keys)
{
    QStringList texts;
    for (const TQKEY_ELEMENT *key : keys) {
        texts += QStringLiteral("%1:%2").arg(key->key, 0, 16).arg(key->hkey, 0, 16);
    }
    qDeleteAll(keys);
    return texts;
}

}  // namespace

class tst_XMLAction : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void everyValueIsStoredUnderItsKey();
    void nameTypeAndOriginatorAreAttributes();
    void itemsAreAppendedAsCopies();
    void aKeyHasTwoWords();
    void theShorterListOfKeysCounts();
    void jobsAreLists();
    void everySettingOfCheckedIsSignalled();
    void signalsAndSlots();
};

void tst_XMLAction::everyValueIsStoredUnderItsKey()
{
    using A = XMLAction;
    isStored("visible", &A::setVisible, &A::hasVisible, &A::getVisible, true, false, "0");
    isStored("enabled", &A::setEnabled, &A::hasEnabled, &A::isEnabled, true, false, "0");
    isStored("show_newest_page", &A::setShowNewestPage, &A::hasShowNewestPage,
        &A::getShowNewestPage, false, true, "1");
    isStored("checkable", &A::setCheckable, &A::hasCheckable, &A::isCheckable, false, true, "1");
    isStored("checked", &A::setChecked, &A::hasChecked, &A::isChecked, false, true, "1");
    isStored("selected", &A::setSelected, &A::hasSelected, &A::isSelected, false, true, "1");
    isStored(
        "need_update", &A::setNeedUpdate, &A::hasNeedUpdate, &A::getNeedUpdate, false, true, "1");
    isStored("exclude_publications", &A::setExcludePublications, &A::hasExcludePublications,
        &A::getExcludePublications, false, true, "1");
    isStored("paint_pixmap", &A::setPaintPixmap, &A::hasPaintPixmap, &A::getPaintPixmap, false,
        true, "1");
    isStored("sort_ascending", &A::setSortAscending, &A::hasSortAscending, &A::getSortAscending,
        false, true, "1");
    isStored("pagenum", &A::setPageNumber, &A::hasPageNumber, &A::getPageNumber, 0, 26, "26");
    isStored("channel_id", &A::setChannelID, &A::hasChannelID, &A::getChannelID, 0U, 0xfffffffaU,
        "fffffffa");
    isStored("index", &A::setIndex, &A::hasIndex, &A::getIndex, 0, -26, "-26");
    isStored("x", &A::setX, &A::hasX, &A::getX, 0, 26, "26");
    isStored("y", &A::setY, &A::hasY, &A::getY, 0, INT_MIN, "-2147483648");
    isStored("x_double", &A::setXDouble, &A::hasXDouble, &A::getXDouble, 0.0, 0.5, "0.5");
    isStored("y_double", &A::setYDouble, &A::hasYDouble, &A::getYDouble, 0.0, -1e20, "-1e+20");
    isStored("colour", &A::setColour, &A::hasColour, &A::getColour, 0xffffffU, 26U, "1a");
    isStored("sort_type", &A::setSortType, &A::hasSortType, &A::getSortType, 0, 26, "26");
    isStored("jobids", &A::setJobID, &A::hasJobID, &A::getJobID, 0, 26, "1a");
    isStored("tqjobids", &A::setTQJobID, &A::hasTQJobID, &A::getTQJobID, 0, -26, "-1a");
}

void tst_XMLAction::nameTypeAndOriginatorAreAttributes()
{
    const XMLAction absent;
    QVERIFY(absent.getName().isNull());
    QVERIFY(absent.getOrgName().isNull());
    QCOMPARE(absent.getType(), 0);
    XMLAction action(str("%1"), 3, 7);
    action.setName(QString());  // leaves the earlier one
    action.setType(-1);
    action.setOrgName(str("%2"));
    action.setRect(10, 20, 5, 6);
    action.setTextRect(1, 2, 3, 4);
    QCOMPARE(action.getName(), str("%1"));
    QCOMPARE(action.getType(), -1);
    QCOMPARE(action.getOriginator(), 7);
    QCOMPARE(action.getOrgName(), str("%2"));
    QCOMPARE(action.rect(), QRect(10, 20, 5, 6));
    QCOMPARE(action.textRect(), QRect(1, 2, 3, 4));
    QCOMPARE(xmlOf(action.getNodeConst()),
        str("<action name='%1' originator='7' type='-1'><org_name>%2</org_name></action>"));
}

void tst_XMLAction::itemsAreAppendedAsCopies()
{
    XMLAction action;
    XMLPacketable item;
    item.setName(str("n"));
    const QDomElement copy = action.append(item);
    item.setName(str("later"));
    QCOMPARE(xmlOf(copy), str("<packetable name='n'/>"));
    TQPacketable output(PACKETDATATYPE_OUTPUT);
    QCOMPARE(xmlOf(action.append(output)),
        str("<packetable datatype='8' hkey='0' key='0'><item datatype='8'/></packetable>"));
    action.setNode(QDomElement());
    QVERIFY(action.append(output).isNull());
}

void tst_XMLAction::aKeyHasTwoWords()
{
    XMLAction action;
    QVERIFY(!action.hasTQKEY());
    for (const char *half : { "<action><tqkey_key>5</tqkey_key></action>",
             "<action><tqkey_hkey>5</tqkey_hkey></action>" }) {
        action.setNode(Xml(half).root);
        QVERIFY(!action.hasTQKEY());
    }
    QCOMPARE(action.getTQKEY().hkey, 5U);
    action.setTQKEY({ 0x10, 2 });
    QVERIFY(action.hasTQKEY());
    QCOMPARE(action.getTQKEY().key, 16U);
    QCOMPARE(action.getTQKEY().hkey, 2U);
}

// One that cannot be read is none.
void tst_XMLAction::theShorterListOfKeysCounts()
{
    XMLAction action;
    QVERIFY(!action.hasTQKEYList());
    TQKEY_ELEMENT one { 0x1f, 2 };
    TQKEY_ELEMENT two { 0xffffffff, 10 };
    action.setTQKEYList({ &one, nullptr, &two });
    QVERIFY(action.hasTQKEYList());
    QCOMPARE(textOf(action.getTQKEYList()), QStringList({ str("1f:2"), str("ffffffff:a") }));
    QDomElement e = action.getNodeConst();
    XMLObject::setProperty(e, str("tqkey_key_list"), str("7 8 9"));
    QCOMPARE(textOf(action.getTQKEYList()), QStringList({ str("7:2"), str("8:a") }));
    XMLObject::setProperty(e, str("tqkey_key_list"), str("7"));
    QCOMPARE(textOf(action.getTQKEYList()), QStringList(str("7:2")));
    XMLObject::setProperty(e, str("tqkey_key_list"), str("7 x"));
    QCOMPARE(textOf(action.getTQKEYList()), QStringList());
    action.setNode(Xml("<action><tqkey_hkey_list/></action>").root);
    QVERIFY(!action.hasTQKEYList());
}

void tst_XMLAction::jobsAreLists()
{
    XMLAction action;
    action.setJobIDs({ 1, 26, -255 });
    action.setTQJobIDs({});
    QCOMPARE(XMLObject::getProperty(action.getNodeConst(), str("jobids")), str("1 1a -ff"));
    QCOMPARE(action.getJobIDs(), QList<int>({ 1, 26, -255 }));
    QCOMPARE(action.getJobID(), 1);
    QVERIFY(action.hasTQJobIDs());
    QVERIFY(action.getTQJobIDs().isEmpty());
    QCOMPARE(action.getTQJobID(), 0);
}

// Also when it changes nothing, with what reads back.
void tst_XMLAction::everySettingOfCheckedIsSignalled()
{
    XMLAction action;
    QList<bool> states;
    connect(&action, &XMLAction::toggled, [&](bool on) { states += on; });
    connect(&action, &XMLAction::toggling, [] { QFAIL("the library asks nothing"); });
    action.setChecked(true);
    action.setChecked(true);
    action.toggle();
    action.setNode(QDomElement());
    action.setChecked(true);
    QCOMPARE(states, QList<bool>({ true, true, false, false }));
}

void tst_XMLAction::signalsAndSlots()
{
    QCOMPARE(methodsOf(XMLAction::staticMetaObject),
        QStringList({ str("signal toggled(bool) checked"), str("signal toggling(bool&) cancel"),
            str("slot toggle()"), str("slot setChecked(bool)"), str("slot setEnabled(bool)") }));
}

QTEST_GUILESS_MAIN(tst_XMLAction)
#include "tst_xmlaction.moc"
