#include "xmlui.h"

#include "util.h"
#include "xmlaction.h"
#include "xmlimage.h"

using Actions = QList<XMLAction *>;

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
    void edited();
    void widePage();
    void image();
};

void tst_XMLUI::page()
{
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
    QCOMPARE(ui.visibleActionCount(), 2);
    actions.at(0)->setOriginator(7);
    QCOMPARE(types(actions), str("72112"));
    ui.getActions(actions);
    QCOMPARE(types(actions), str("112"));
}

// The first two actions change, and nothing else.
void tst_XMLUI::edited()
{
    XMLUI ui;
    ui.setNode(Xml(PAGE).root);
    QString expected = canonical(ui.getNodeConst());
    ui.setActionName(5, 3, str("x"));
    QCOMPARE(canonical(ui.getNodeConst()), expected);
    ui.setActionName(5, 1, str("%1"));
    ui.setActionOrgName(5, 1, str("%2"));
    ui.setActionVisible(5, 1, false);
    const QString edits[][2] = {
        { str("<action originator=1;type=5></>"),
            str("<action name=%1;originator=1;type=5><org_name >[3 #text:%2]</>"
                "<visible >[3 #text:0]</></>") },
        { str("<action originator=1;type=5><visible >[3 #text:0]</></>"),
            str("<action name=%1;originator=1;type=5><visible >[3 #text:0]</>"
                "<org_name >[3 #text:%2]</></>") },
    };
    for (const auto &edit : edits) {
        const auto at = expected.indexOf(edit[0]);
        QVERIFY(at >= 0);
        expected.replace(at, edit[0].size(), edit[1]);
    }
    QCOMPARE(canonical(ui.getNodeConst()), expected);
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
    XMLImage named(str("n"));
    named.setName(str(""));
    QCOMPARE(named.getName(), str("n"));
}

QTEST_GUILESS_MAIN(tst_XMLUI)
#include "tst_xmlui.moc"
