#include "xmlaction.h"

#include "tqpacketable.h"
#include "util.h"
#include "xmlactiongroup.h"
#include "xmlpacketable.h"

#include <QSignalSpy>

using Ints = QList<int>;
using Check = std::function<void()>;
Q_DECLARE_METATYPE(Check)

namespace {

using Has = bool (XMLAction::*)() const;

// Absent, set and unreadable, and on an element that is none.
template<typename T>
Check stored(const char *key, void (XMLAction::*set)(T), Has has, T (XMLAction::*get)() const,
    T absent, T value, const char *text, T unreadable = T())
{
    return [=] {
        XMLAction action;
        QVERIFY(!(action.*has)());
        QVERIFY((action.*get)() == absent);
        (action.*set)(value);
        QVERIFY((action.*has)());
        QVERIFY((action.*get)() == value);
        QCOMPARE(canonical(action.getNodeConst()),
            QStringLiteral("<action ><%1 >[3 #text:%2]</></>").arg(str(key), str(text)));
        XMLAction odd;
        odd.setNode(Xml(QStringLiteral("<action><%1>?</%1></action>").arg(str(key))).root);
        QVERIFY((odd.*has)());
        QVERIFY((odd.*get)() == unreadable);
        odd.setNode(Xml(QStringLiteral("<action><?%1 1?></action>").arg(str(key))).root);
        QVERIFY(!(odd.*has)());
        QVERIFY((odd.*get)() == absent);
        odd.setNode(QDomElement());
        (odd.*set)(value);
        QVERIFY(!(odd.*has)());
        QVERIFY((odd.*get)() == absent);
    };
}

}  // namespace

class tst_XMLAction : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void operations();
    void properties_data();
    void properties();
    void attributes();
    void keys();
    void toggling();
    void memoryOnly();
    void items();
};

void tst_XMLAction::operations()
{
    using O = XMLAction;
    using W = QDomElement &;
    using S = const QString &;
    QVERIFY((exist<void(W, bool)>({ &O::setVisible })));
    QVERIFY((exist<void(W, S)>({ &O::setName, &O::setOrgName })));
    QVERIFY((existIn<O, void(S)>({ &O::setName, &O::setOrgName })));
    QVERIFY((existIn<O, void(S) const>({ &O::print })));
    QVERIFY((existIn<O, void(int, int, int, int)>({ &O::setRect, &O::setTextRect })));
    QVERIFY((existIn<O, void(const Ints &)>({ &O::setJobIDs, &O::setTQJobIDs })));
    QVERIFY((existIn<O, QDomElement(XMLPacketable &)>({ &O::append })));
    QVERIFY((existIn<O, QDomElement(TQPacketable &)>({ &O::append })));

    const QMetaObject &meta = XMLAction::staticMetaObject;
    QStringList methods;
    for (int i = meta.methodOffset(); i < meta.methodCount(); ++i) {
        methods += QString::fromLatin1(meta.method(i).methodSignature()) + QLatin1Char(' ') +
            QString::fromLatin1(meta.method(i).parameterNames().value(0));
    }
    QCOMPARE(methods.join(QLatin1Char(',')),
        str("toggled(bool) checked,toggling(bool&) cancel,toggle() ,setChecked(bool) checked,"
            "setEnabled(bool) enabled"));
    QCOMPARE(meta.className(), "XMLAction");
    QCOMPARE(meta.superClass()->className(), "QObject");
}

void tst_XMLAction::properties_data()
{
    QTest::addColumn<Check>("check");
    const auto row = [](const char *key, const Check &check) { QTest::newRow(key) << check; };
#define ROW(key, name, ...)                                                                        \
    row(key, stored(key, &XMLAction::set##name, &XMLAction::has##name, __VA_ARGS__))
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

void tst_XMLAction::properties()
{
    QFETCH(Check, check);
    check();
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
    QCOMPARE(action.getOrgName(), str("%2"));
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
    XMLObject::setProperty(const_cast<QDomElement &>(action.getNodeConst()), str("tqkey_key"), "5");
    QVERIFY(!action.hasTQKEY());
    QCOMPARE(action.getTQKEY().key, 5U);
    QCOMPARE(action.getTQKEY().hkey, 0U);
    action.setTQKEY({ 0x10, 2 });
    QCOMPARE(canonical(action.getNodeConst()),
        str("<action ><tqkey_key >[3 #text:10]</><tqkey_hkey >[3 #text:2]</></>"));
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
    QCOMPARE(keysOf(), str("1f:2 ffffffff:a"));
    const std::pair<const char *, const char *> rows[] = { { "7 8 9", "7:2 8:a" }, { "7", "7:2" },
        { "7 x", "" }, { "", "" } };
    for (const auto &row : rows) {
        XMLObject::setProperty(e, str("tqkey_key_list"), str(row.first));
        QCOMPARE(keysOf(), str(row.second));
    }
    action.setTQKEYList({});
    QVERIFY(action.hasTQKEYList() && keysOf().isEmpty());

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
    QVERIFY(QMetaObject::invokeMethod(&action, "setEnabled", Q_ARG(bool, false)));
    QVERIFY(!action.hasEnabled());

    auto *dying = new XMLAction;
    const QPointer<XMLAction> guard(dying);
    connect(dying, &XMLAction::toggled, dying, [dying] { delete dying; });
    dying->toggle();
    QVERIFY(!guard);
}

void tst_XMLAction::memoryOnly()
{
    XMLAction action;
    XMLActionGroup group(nullptr, "g");
    QVERIFY(action.rect().isNull() && action.textRect().isNull() && !action.actionGroup());
    action.setRect(10, 20, 5, 5);
    action.setTextRect(1, 2, 3, 4);
    action.setActionGroup(&group);
    QCOMPARE(action.rect().right(), 14);
    QCOMPARE(action.rect().bottom(), 24);
    QCOMPARE(action.textRect(), QRect(1, 2, 3, 4));
    QCOMPARE(action.actionGroup(), &group);
    QCOMPARE(canonical(action.getNodeConst()), str("<action ></>"));
}

void tst_XMLAction::items()
{
    XMLAction action;
    XMLPacketable item;
    item.setName(str("n"));
    const QDomElement first = action.append(item);
    const QDomNode second = action.append(item);
    QCOMPARE(second, action.getNodeConst().lastChild());
    item.setName(str("later"));
    QCOMPARE(XMLPacketable::getName(first), str("n"));
    const std::unique_ptr<TQPacketable> converted(
        PacketableUtil::getPacketable(PACKETDATATYPE_JOB));
    QCOMPARE(canonical(action.append(*converted)),
        str("<packetable datatype=15;hkey=0;key=0><item datatype=15></></>"));
    std::list<QDomNode> nodes;
    QCOMPARE(action.getNodesOfType(XMLObject::XMLOBJECT_PACKETABLE, nodes), 3);
    QVERIFY(!action.hasNodesOfType(XMLObject::XMLOBJECT_UI));
    action.removeNodesOfType(XMLObject::XMLOBJECT_PACKETABLE);
    QVERIFY(!action.hasNodesOfType(XMLObject::XMLOBJECT_PACKETABLE));
    action.setNode(QDomElement());
    QVERIFY(action.append(item).isNull() && action.append(*converted).isNull());
}

QTEST_GUILESS_MAIN(tst_XMLAction)
#include "tst_xmlaction.moc"
