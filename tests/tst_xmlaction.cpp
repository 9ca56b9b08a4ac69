#include "xmlaction.h"

#include "tqpacketable.h"
#include "util.h"
#include "xmlpacketable.h"

using Ints = QList<int>;

namespace {

// Absent, set and unreadable, and on an element that is none.
template<typename T>
void stored(const char *key, void (XMLAction::*set)(T), bool (XMLAction::*has)() const,
    T (XMLAction::*get)() const, T absent, T value, const char *text)
{
    XMLAction action;
    QVERIFY2(!(action.*has)() && (action.*get)() == absent, key);
    (action.*set)(value);
    QVERIFY2((action.*has)() && (action.*get)() == value, key);
    QCOMPARE(canonical(action.getNodeConst()),
        QStringLiteral("<action ><%1 >[3 #text:%2]</></>").arg(str(key), str(text)));
    action.setNode(Xml(QStringLiteral("<action><%1>?</%1></action>").arg(str(key))).root);
    QVERIFY2((action.*has)() && (action.*get)() == T(), key);
    action.setNode(Xml(QStringLiteral("<action><?%1 1?></action>").arg(str(key))).root);
    QVERIFY2(!(action.*has)() && (action.*get)() == absent, key);
    action.setNode(QDomElement());
    (action.*set)(value);
    QVERIFY2(!(action.*has)() && (action.*get)() == absent, key);
}

}  // namespace

class tst_XMLAction : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void properties();
    void attributes();
    void lists();
    void toggling();
    void signalsAndSlots();
};

void tst_XMLAction::properties()
{
#define ROW(key, name, ...) stored(key, &A::set##name, &A::has##name, __VA_ARGS__)
    using A = XMLAction;
    ROW("visible", Visible, &A::getVisible, true, false, "0");
    ROW("show_newest_page", ShowNewestPage, &A::getShowNewestPage, false, true, "1");
    ROW("enabled", Enabled, &A::isEnabled, true, false, "0");
    ROW("checkable", Checkable, &A::isCheckable, false, true, "1");
    ROW("checked", Checked, &A::isChecked, false, true, "1");
    ROW("selected", Selected, &A::isSelected, false, true, "1");
    ROW("need_update", NeedUpdate, &A::getNeedUpdate, false, true, "1");
    ROW("exclude_publications", ExcludePublications, &A::getExcludePublications, false, true, "1");
    ROW("paint_pixmap", PaintPixmap, &A::getPaintPixmap, false, true, "1");
    ROW("sort_ascending", SortAscending, &A::getSortAscending, false, true, "1");
    ROW("pagenum", PageNumber, &A::getPageNumber, 0, 26, "26");
    ROW("channel_id", ChannelID, &A::getChannelID, 0U, 0xfffffffaU, "fffffffa");
    ROW("index", Index, &A::getIndex, 0, -26, "-26");
    ROW("x", X, &A::getX, 0, 26, "26");
    ROW("y", Y, &A::getY, 0, -2147483647 - 1, "-2147483648");
    ROW("x_double", XDouble, &A::getXDouble, 0.0, 0.5, "0.5");
    ROW("y_double", YDouble, &A::getYDouble, 0.0, -1e20, "-1e+20");
    ROW("colour", Colour, &A::getColour, 0xffffffU, 26U, "1a");
    ROW("sort_type", SortType, &A::getSortType, 0, 26, "26");
    ROW("jobids", JobID, &A::getJobID, 0, 26, "1a");
    ROW("tqjobids", TQJobID, &A::getTQJobID, 0, -26, "-1a");
#undef ROW
}

void tst_XMLAction::attributes()
{
    const XMLAction absent;
    QVERIFY(absent.getName().isNull());
    QVERIFY(absent.getOrgName().isNull());
    QVERIFY(absent.isXMLAction());
    QCOMPARE(absent.getType() + absent.getOriginator(), 0);
    XMLAction action(str("%1"), 3, 7);
    QVERIFY(action.getName() == str("%1"));
    QVERIFY(action.getType() == 3);
    QVERIFY(action.getOriginator() == 7);
    action.setName(QString());
    action.setType(-1);
    action.setOrgName(str("%2"));
    action.setRect(10, 20, 5, 5);
    action.setTextRect(1, 2, 3, 4);
    QVERIFY(action.rect() == QRect(10, 20, 5, 5));
    QVERIFY(action.textRect() == QRect(1, 2, 3, 4));
    QCOMPARE(canonical(action.getNodeConst()),
        str("<action name=%1;originator=7;type=-1><org_name >[3 #text:%2]</></>"));
    XMLPacketable item;
    item.setName(str("n"));
    const QDomElement copy = action.append(item);
    item.setName(str("later"));
    QVERIFY(copy == action.getNodeConst().lastChild());
    QVERIFY(XMLPacketable::getName(copy) == str("n"));
    const std::unique_ptr<TQPacketable> job(PacketableUtil::getPacketable(PACKETDATATYPE_JOB));
    QCOMPARE(canonical(action.append(*job)),
        str("<packetable datatype=15;hkey=0;key=0><item datatype=15></></>"));
    std::list<QDomNode> items;
    QCOMPARE(action.getNodesOfType(XMLObject::XMLOBJECT_PACKETABLE, items), 2);
    action.removeNodesOfType(XMLObject::XMLOBJECT_PACKETABLE);
    QVERIFY(!action.hasNodesOfType(XMLObject::XMLOBJECT_PACKETABLE));
    action.setNode(QDomElement());
    QVERIFY(action.append(item).isNull());
    QVERIFY(action.append(*job).isNull());
}

void tst_XMLAction::lists()
{
    XMLAction action;
    QVERIFY(!action.hasTQKEY());
    QVERIFY(!action.hasTQKEYList());
    QVERIFY(action.getTQKEYList().isEmpty());
    action.setNode(Xml("<action><tqkey_key>5</tqkey_key></action>").root);
    QVERIFY(!action.hasTQKEY());
    QVERIFY(action.getTQKEY().key == 5);
    QVERIFY(action.getTQKEY().hkey == 0);
    action.setTQKEY({ 0x10, 2 });
    QVERIFY(action.hasTQKEY());
    QVERIFY(action.getTQKEY().key == 16);
    QVERIFY(action.getTQKEY().hkey == 2);

    TQKEY_ELEMENT one { 0x1f, 2 };
    TQKEY_ELEMENT two { 0xffffffff, 10 };
    action.setTQKEYList({ &one, nullptr, &two });
    QDomElement e = action.getNodeConst();
    QString found;
    QCOMPARE(XMLObject::getProperty(e, str("tqkey_key_list")), str("1f ffffffff"));
    // The shorter list counts, and one that cannot be read is none.
    for (const char *words : { "1f ffffffff", "7 8 9", "7", "7 x" }) {
        XMLObject::setProperty(e, str("tqkey_key_list"), str(words));
        for (const TQKEY_ELEMENT *key : action.getTQKEYList()) {
            found += QStringLiteral("%1:%2 ").arg(key->key, 0, 16).arg(key->hkey, 0, 16);
            delete key;
        }
    }
    QCOMPARE(found, str("1f:2 ffffffff:a 7:2 8:a 7:2 "));
    action.setJobIDs({ 1, 26, -255 });
    action.setTQJobIDs({});
    QCOMPARE(XMLObject::getProperty(e, str("jobids")), str("1 1a -ff"));
    QCOMPARE(action.getJobIDs(), Ints({ 1, 26, -255 }));
    QVERIFY(action.hasTQJobIDs());
    QVERIFY(action.getTQJobIDs().isEmpty());
    QCOMPARE(action.getJobID() + action.getTQJobID(), 1);
    action.setNode(Xml("<action><tqkey_hkey>5</tqkey_hkey><tqkey_hkey_list/></action>").root);
    QVERIFY(!action.hasTQKEY());
    QVERIFY(!action.hasTQKEYList());
}

void tst_XMLAction::toggling()
{
    XMLAction action;
    QString states;  // what reads back, at last nothing
    connect(&action, &XMLAction::toggled, [&](bool on) { states += QString::number(on); });
    connect(&action, &XMLAction::toggling, [] { QFAIL("the library asks nothing"); });
    action.setChecked(true);
    action.setChecked(true);
    action.toggle();
    action.setNode(QDomElement());
    action.setChecked(true);
    QCOMPARE(states, str("1100"));
}

void tst_XMLAction::signalsAndSlots()
{
    QCOMPARE(methodsOf(XMLAction::staticMetaObject),
        QStringList({ str("signal toggled(bool) checked"), str("signal toggling(bool&) cancel"),
            str("slot toggle()"), str("slot setChecked(bool)"), str("slot setEnabled(bool)") }));
}

QTEST_GUILESS_MAIN(tst_XMLAction)
#include "tst_xmlaction.moc"
