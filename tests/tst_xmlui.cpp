#include "xmlui.h"

#include "util.h"
#include "xmlaction.h"
#include "xmlimage.h"

using Actions = QList<XMLAction *>;

namespace {

// A page of three actions, of which the second is hidden, and much that only looks like one; what
// the first two have beside their type and originator.
Xml page(const char *name = "", const char *first = "", const char *second = "")
{
    return Xml(str("<ui><?action x?><action type='5' originator='1'%1>%2</action>"
                   "<action type='5' originator='1'%1><visible>0</visible>%3</action><!--action-->"
                   "<img type='5' originator='1'/><action type='5' originator='2'><action "
                   "type='5' originator='1'/></action><packetable/></ui>")
                   .arg(str(name), str(first), str(second)));
}

QString originators(Actions &actions)
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
    void actions();
    void edited();
    void image();
};

void tst_XMLUI::actions()
{
    XMLUI ui(str("%1"));
    Actions actions;
    QVERIFY(ui.getActions(actions) == 0);
    QVERIFY(ui.visibleActionCount() == 0);
    QCOMPARE(ui.getName(), str("%1"));
    XMLAction action(str("a"), 1, 2);
    QDomElement copy = ui.append(action);
    action.setName(str("b"));
    copy.setAttribute(str("type"), 9);
    QCOMPARE(
        canonical(ui.getNodeConst()), str("<ui name=%1><action name=a;originator=2;type=9></></>"));
    ui.setNode(page().root);
    QCOMPARE(ui.getActions(actions, true), 2);
    QCOMPARE(ui.getActions(actions), 3);
    QCOMPARE(ui.visibleActionCount(), 2);
    actions.at(0)->setOriginator(7);  // a copy
    QCOMPARE(originators(actions), str("72112"));
    ui.getActions(actions);
    QCOMPARE(originators(actions), str("112"));
    ui.setNode(QDomElement());
    ui.setActionVisible(5, 1, true);
    QVERIFY(ui.append(action).isNull());
    QVERIFY(ui.getActions(actions) == 0);
}

// The first two actions change, and nothing else.
void tst_XMLUI::edited()
{
    XMLUI ui;
    ui.setNode(page().root);
    ui.setActionName(5, 3, str("x"));
    ui.setActionName(5, 1, str("%1"));
    ui.setActionOrgName(5, 1, str("%2"));
    ui.setActionVisible(5, 1, false);
    const Xml expected = page(
        " name='%1'", "<org_name>%2</org_name><visible>0</visible>", "<org_name>%2</org_name>");
    QCOMPARE(canonical(ui.getNodeConst()), canonical(expected.root));
}

void tst_XMLUI::image()
{
    XMLImage image;
    QVERIFY(image.isXMLImage());
    QVERIFY(image.getName().isNull());
    QVERIFY(image.getURL().isNull());
    image.setURL(str("file:///a b%20%1?x&y"));
    image.setURL(QString());
    QCOMPARE(canonical(image.getNodeConst()), str("<img url=file:///a b%20%1?x&y></>"));
    XMLImage named(str("n"));
    named.setName(str(""));
    QCOMPARE(named.getName(), str("n"));
}

QTEST_GUILESS_MAIN(tst_XMLUI)
#include "tst_xmlui.moc"
