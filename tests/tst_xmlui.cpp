#include "xmlui.h"

#include "util.h"
#include "xmlaction.h"
#include "xmlimage.h"

namespace {

// Two actions of one type and originator, the second hidden, and one of another originator.
const char PAGE[] = "<ui><?action x?>"
                    "<action name='open' originator='1' type='5'/>"
                    "<action name='hide' originator='1' type='5'><visible>0</visible></action>"
                    "<img originator='1' type='5'/>"
                    "<action name='print' originator='2' type='5'>"
                    "<action name='inner' originator='1' type='5'/></action></ui>";

}  // namespace

class tst_XMLUI : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void actionsAreAppendedAndListedAsCopies();
    void actionsChangeByTypeAndOriginator();
    void aPageWithoutAnElementHasNoActions();
    void anImageHasANameAndAnAddress();
};

void tst_XMLUI::actionsAreAppendedAndListedAsCopies()
{
    XMLUI page(str("%1"));
    QCOMPARE(page.getName(), str("%1"));
    XMLAction action(str("open"), 1, 2);
    page.append(action);
    action.setName(str("later"));
    QCOMPARE(xmlOf(page.getNodeConst()),
        str("<ui name='%1'><action name='open' originator='2' type='1'/></ui>"));
    page.setNode(Xml(PAGE).root);
    QList<XMLAction *> actions;
    QCOMPARE(page.getActions(actions, true), 2);
    QCOMPARE(page.getActions(actions), 3);
    QCOMPARE(page.visibleActionCount(), 2);
    QStringList names;
    for (XMLAction *listed : actions) {
        names += listed->getName();
        listed->setName(str("changed"));
    }
    qDeleteAll(actions);
    QCOMPARE(names.join(QLatin1Char(' ')), str("open print open hide print"));
    QCOMPARE(xmlOf(page.getNodeConst()), str(PAGE));
}

void tst_XMLUI::actionsChangeByTypeAndOriginator()
{
    XMLUI page;
    page.setNode(Xml(PAGE).root);
    page.setActionName(5, 3, str("nobody's"));
    page.setActionName(5, 1, str("%1"));
    page.setActionOrgName(5, 1, str("%2"));
    page.setActionVisible(5, 1, false);
    const QString own = str("<org_name>%2</org_name>");
    const QString hidden = str("<visible>0</visible>");
    const QString action = str("<action name='%1' originator='1' type='5'>");
    QString expected = str(PAGE);
    expected.replace(str("<action name='open' originator='1' type='5'/>"),
        action + own + hidden + str("</action>"));
    expected.replace(
        str("<action name='hide' originator='1' type='5'>") + hidden, action + hidden + own);
    QCOMPARE(xmlOf(page.getNodeConst()), expected);
}

void tst_XMLUI::aPageWithoutAnElementHasNoActions()
{
    XMLUI page;
    XMLAction action;
    QList<XMLAction *> actions;
    page.setNode(QDomElement());
    page.setActionVisible(5, 1, true);
    QVERIFY(page.append(action).isNull());
    QCOMPARE(page.getActions(actions), 0);
    QCOMPARE(page.visibleActionCount(), 0);
}

void tst_XMLUI::anImageHasANameAndAnAddress()
{
    XMLImage image(str("n"));
    QVERIFY(image.getURL().isNull());
    image.setURL(str("file:///a b%20%1?x&y"));
    image.setURL(QString());  // leaves the earlier one
    image.setName(str(""));
    QCOMPARE(image.getURL(), str("file:///a b%20%1?x&y"));
    QCOMPARE(image.getName(), str("n"));
    QCOMPARE(xmlOf(image.getNodeConst()), str("<img name='n' url='file:///a b%20%1?x&amp;y'/>"));
}

QTEST_GUILESS_MAIN(tst_XMLUI)
#include "tst_xmlui.moc"
