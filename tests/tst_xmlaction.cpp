#include "xmlaction.h"

#include "tqpacketable.h"
#include "util.h"
#include "xmlpacketable.h"

#include <QSignalSpy>

using Ints = QList<int>;

namespace {

using Has = bool (XMLAction::*)() const;

// Absent, set and unreadable, and on an element that is none.
template<typename T>
void stored(const char *key, void (XMLAction::*set)(T), Has has, T (XMLAction::*get)() const,
    T absent, T value, const char *text)
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
    void keys();
    void toggling();
    void items();
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
    XMLAction action(str("%1"), 3, 7);
    QCOMPARE(canonical(action.getNodeConst()), str("<action name=%1;originator=7;type=3></>"));
    QVERIFY(action.getName() == str("%1") && action.getType() == 3 && action.getOriginator() == 7);
    action.setName(QString());
    action.setType(-1);
    action.setOrgName(str("%2"));
    QCOMPARE(canonical(action.getNodeConst()),
        str("<action name=%1;originator=7;type=-1><org_name >[3 #text:%2]</></>"));
    QDomElement e = action.getNodeConst();
    XMLAction::setName(e, str("n"));
    XMLAction::setOrgName(e, str("o"));
    XMLAction::setVisible(e, false);
    QVERIFY(
        action.getName() == str("n") && action.getOrgName() == str("o") && !action.getVisible());
    const XMLAction absent;
    QVERIFY(absent.getName().isNull() && absent.getOrgName().isNull() && absent.isXMLAction());
    QCOMPARE(absent.getType() + absent.getOriginator(), 0);
    QVERIFY(!absent.getNodeConst().hasChildNodes() && !absent.getNodeConst().hasAttributes());
    const QByteArray shown = printed([&] { absent.print(str("t\xc3\xa4%1")); });
    QCOMPARE(shown, "-- t\xc3\xa4%1 --\n" + absent.toString().toUtf8() + "\n");
}

void tst_XMLAction::keys()
{
    XMLAction action;
    QVERIFY(!action.hasTQKEY() && !action.hasTQKEYList() && action.getTQKEYList().isEmpty());
    action.setNode(Xml("<action><tqkey_key>5</tqkey_key></action>").root);
    QVERIFY(!action.hasTQKEY() && action.getTQKEY().key == 5 && action.getTQKEY().hkey == 0);
    action.setTQKEY({ 0x10, 2 });
    QVERIFY(action.hasTQKEY() && action.getTQKEY().key == 16 && action.getTQKEY().hkey == 2);

    TQKEY_ELEMENT one { 0x1f, 2 };
    TQKEY_ELEMENT two { 0xffffffff, 10 };
    action.setTQKEYList({ &one, nullptr, &two });
    QDomElement e = action.getNodeConst();
    QCOMPARE(XMLObject::getProperty(e, str("tqkey_key_list")), str("1f ffffffff"));
    QCOMPARE(XMLObject::getProperty(e, str("tqkey_hkey_list")), str("2 a"));
    const auto keysOf = [&action] {
        QStringList texts;
        const QList<TQKEY_ELEMENT *> keys = action.getTQKEYList();
        for (const TQKEY_ELEMENT *key : keys) {
            texts += QStringLiteral("%1:%2").arg(key->key, 0, 16).arg(key->hkey, 0, 16);
        }
        qDeleteAll(keys);
        return texts.join(QLatin1Char(' '));
    };
    const std::pair<const char *, const char *> rows[] = { { "1f ffffffff", "1f:2 ffffffff:a" },
        { "7 8 9", "7:2 8:a" }, { "7", "7:2" }, { "7 x", "" }, { "", "" } };
    for (const auto &row : rows) {
        XMLObject::setProperty(e, str("tqkey_key_list"), str(row.first));
        QCOMPARE(keysOf(), str(row.second));
    }
    action.setJobIDs({ 1, 26, -255 });
    action.setTQJobIDs({});
    QCOMPARE(XMLObject::getProperty(e, str("jobids")), str("1 1a -ff"));
    QCOMPARE(action.getJobIDs(), Ints({ 1, 26, -255 }));
    QVERIFY(action.hasJobIDs() && action.hasTQJobIDs() && action.getTQJobIDs().isEmpty());
    QCOMPARE(action.getJobID() + action.getTQJobID(), 1);
}

void tst_XMLAction::toggling()
{
    XMLAction action;
    QSignalSpy toggled(&action, SIGNAL(toggled(bool)));
    connect(&action, &XMLAction::toggling, [] { QFAIL("the library asks nothing"); });
    action.setChecked(true);
    action.setChecked(true);
    action.toggle();
    action.setNode(QDomElement());
    action.setChecked(true);
    QString states;
    for (const QList<QVariant> &arguments : toggled) {
        states += QString::number(arguments.first().toBool());
    }
    QCOMPARE(states, str("1100"));  // what reads back, at last nothing

    auto *dying = new XMLAction;
    const QPointer<XMLAction> guard(dying);
    connect(dying, &XMLAction::toggled, dying, [dying] { delete dying; });
    dying->toggle();
    QVERIFY(!guard);
}

void tst_XMLAction::items()
{
    XMLAction action;
    action.setRect(10, 20, 5, 5);
    action.setTextRect(1, 2, 3, 4);
    QCOMPARE(action.rect(), QRect(10, 20, 5, 5));
    QCOMPARE(action.textRect(), QRect(1, 2, 3, 4));
    QVERIFY(!action.getNodeConst().hasChildNodes() && !action.getNodeConst().hasAttributes());
    XMLPacketable item;
    item.setName(str("n"));
    const QDomElement first = action.append(item);
    QCOMPARE(first, action.getNodeConst().lastChild());
    item.setName(str("later"));
    QCOMPARE(XMLPacketable::getName(first), str("n"));
    const std::unique_ptr<TQPacketable> converted(
        PacketableUtil::getPacketable(PACKETDATATYPE_JOB));
    QCOMPARE(canonical(action.append(*converted)),
        str("<packetable datatype=15;hkey=0;key=0><item datatype=15></></>"));
    action.setNode(QDomElement());
    QVERIFY(action.append(item).isNull() && action.append(*converted).isNull());
}

QTEST_GUILESS_MAIN(tst_XMLAction)
#include "tst_xmlaction.moc"
