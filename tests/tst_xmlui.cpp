#include "xmlui.h"

#include "util.h"
#include "xmlaction.h"
#include "xmlimage.h"

using Actions = QList<XMLAction *>;
using Change = std::function<void(XMLUI &)>;
Q_DECLARE_METATYPE(Change)

namespace {

const char *const PAGE =
    "<ui><?action x?><action type='5' originator='1'/>"
    "<action type='5' originator='1'><visible>0</visible></action><!--action-->"
    "<img type='5' originator='1'/><action type='5' originator='2'><action "
    "type='5' originator='1'/></action><packetable/></ui>";

QString types(Actions &actions)
{
    QString text;
    for (const XMLAction *action : actions) {
        text += QString::number(action->getOriginator());
    }
    qDeleteAll(actions);
    actions.clear();
    return text;
}

}  // namespace

class tst_XMLUI : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void page();
    void actions();
    void edited_data();
    void edited();
    void widePage();
    void image();
};

void tst_XMLUI::page()
{
    using O = XMLUI;
    QVERIFY((existIn<O, int(Actions &, bool)>({ &O::getActions })));
    QVERIFY((existIn<O, int(Actions &)>({ &O::getActions })));
    QVERIFY((existIn<O, int()>({ &O::visibleActionCount })));
    QVERIFY((existIn<O, QDomElement(XMLAction &)>({ &O::append })));
    XMLUI unnamed;
    QVERIFY(unnamed.getName().isNull() && unnamed.isXMLUI());
    XMLUI ui(str("%1"));
    ui.setName(QString());
    XMLAction action(str("a"), 1, 2);
    QDomElement copy = ui.append(action);
    action.setName(str("b"));
    copy.setAttribute(str("type"), 9);
    QCOMPARE(action.getType(), 1);
    QCOMPARE(
        canonical(ui.getNodeConst()), str("<ui name=%1><action name=a;originator=2;type=9></></>"));
    ui.setNode(QDomElement());
    Actions none;
    ui.setActionVisible(1, 2, true);
    QVERIFY(ui.append(action).isNull() && ui.getActions(none) == 0 && ui.visibleActionCount() == 0);
}

void tst_XMLUI::actions()
{
    XMLUI ui;
    Actions actions;
    QCOMPARE(ui.getActions(actions), 0);
    QCOMPARE(ui.visibleActionCount(), 0);
    ui.setNode(Xml(PAGE).root);
    QCOMPARE(ui.getActions(actions, true), 2);
    QCOMPARE(ui.getActions(actions), 3);
    QCOMPARE(ui.getActions(actions, false), 3);
    QCOMPARE(ui.visibleActionCount(), 2);
    actions.at(0)->setOriginator(7);
    QCOMPARE(types(actions), str("72112112"));
    ui.getActions(actions);
    QCOMPARE(types(actions), str("112"));
}

void tst_XMLUI::edited_data()
{
    QTest::addColumn<Change>("change");
    QTest::addColumn<QString>("before");
    QTest::addColumn<QString>("after");
    const QString first = str("originator=1;type=5>");
    QTest::newRow("name") << Change([](XMLUI &ui) { ui.setActionName(5, 1, str("%1")); })
                          << str("<action ") + first << str("<action name=%1;") + first;
    QTest::newRow("original name")
        << Change([](XMLUI &ui) { ui.setActionOrgName(5, 1, str("%1")); }) << QString()
        << str("<org_name >[3 #text:%1]</>");
    QTest::newRow("visible") << Change([](XMLUI &ui) { ui.setActionVisible(5, 1, false); })
                             << QString() << str("<visible >[3 #text:0]</>");
    QTest::newRow("no such action")
        << Change([](XMLUI &ui) { ui.setActionName(5, 3, str("x")); }) << QString() << QString();
}

// The first two actions change, and nothing else.
void tst_XMLUI::edited()
{
    QFETCH(Change, change);
    QFETCH(QString, before);
    QFETCH(QString, after);
    XMLUI ui;
    ui.setNode(Xml(PAGE).root);
    const QDomElement original = ui.getNode();
    change(ui);
    QDomNode now = ui.getNodeConst().firstChild();
    int changed = 0;
    for (QDomNode was = original.firstChild(); !was.isNull(); was = was.nextSibling()) {
        const QString text = canonical(was);
        QString expected = text;
        if (was.isElement() && changed < 2 && was.nodeName() == str("action")) {
            ++changed;
            if (!before.isEmpty()) {
                expected.replace(before, after);
            } else if (!after.isEmpty() && !text.contains(after)) {
                expected.insert(text.size() - 3, after);
            }
        }
        QCOMPARE(canonical(now), expected);
        now = now.nextSibling();
    }
    QVERIFY(now.isNull() && changed == 2);
}

void tst_XMLUI::widePage()
{
    XMLUI ui;
    XMLAction action(str("a"), 1, 1);
    for (int i = 0; i < 20000; ++i) {
        ui.append(action);
    }
    ui.setActionVisible(1, 1, false);
    QCOMPARE(ui.visibleActionCount(), 0);
}

void tst_XMLUI::image()
{
    XMLImage image;
    QVERIFY(image.isXMLImage() && image.getName().isNull() && image.getURL().isNull());
    image.setURL(str("file:///a b%20%1?x&y"));
    image.setURL(QString());
    QCOMPARE(canonical(image.getNodeConst()), str("<img url=file:///a b%20%1?x&y></>"));
    QCOMPARE(image.getURL(), str("file:///a b%20%1?x&y"));
    XMLImage named(str("n"));
    named.setName(str(""));
    QCOMPARE(canonical(named.getNodeConst()), str("<img name=n></>"));
    QCOMPARE(named.getName(), str("n"));
}

QTEST_GUILESS_MAIN(tst_XMLUI)
#include "tst_xmlui.moc"
