#include "util.h"
#include "xmlaction.h"
#include "xmlimage.h"
#include "xmlpacketable.h"
#include "xmlui.h"

#include <QProcess>
#include <QTemporaryDir>

#include <memory>

// What the library builds fits the schema; for what the command prints see
// tests/command/schema.txt, and damaged documents, too.
class tst_Schema : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void elementsOfAllKinds();
};

// What the validator says about documents, one after the other; nothing when all are valid.
static QString complaints(const QStringList &documents)
{
    const QTemporaryDir folder;
    QStringList arguments { str("--noout"), str("--relaxng"), str(TQXML_SCHEMA) };
    for (const QString &document : documents) {
        QFile file(folder.filePath(QString::number(arguments.size())));
        if (file.open(QIODevice::WriteOnly) && file.write(document.toUtf8()) > 0) {
            arguments += file.fileName();
        }
    }
    QProcess validator;
    validator.start(str(TQXML_XMLLINT), arguments);
    validator.waitForFinished(120000);
    const QString said = QString::fromUtf8(validator.readAllStandardError());
    return said.count(str(" validates\n")) == documents.size() ? QString() : said.right(2000);
}

// Every kind of element, and every property of an action.
void tst_Schema::elementsOfAllKinds()
{
    XMLAction action(str("all"), -2147483647 - 1, 2147483647);
    for (const auto set : { &XMLAction::setVisible, &XMLAction::setShowNewestPage,
             &XMLAction::setCheckable, &XMLAction::setSelected, &XMLAction::setNeedUpdate,
             &XMLAction::setExcludePublications, &XMLAction::setPaintPixmap,
             &XMLAction::setSortAscending, &XMLAction::setEnabled, &XMLAction::setChecked }) {
        (action.*set)(true);
    }
    for (const auto set :
        { &XMLAction::setPageNumber, &XMLAction::setIndex, &XMLAction::setX, &XMLAction::setY,
            &XMLAction::setSortType, &XMLAction::setJobID, &XMLAction::setTQJobID }) {
        (action.*set)(-2147483647 - 1);
    }
    action.setChannelID(0xffffffff);
    action.setColour(0xff00ff);
    action.setXDouble(-1.5e-300);
    action.setYDouble(qInf());
    action.setOrgName(str("Ünïcode <&> \"quoted\""));
    TQKEY_ELEMENT keys[] = { { 0xfffffffe, 3 }, { 1, 2 } };
    action.setTQKEY(keys[0]);
    action.setTQKEYList({ &keys[0], &keys[1] });
    TQPacketable book(PACKETDATATYPE_BOOK);
    action.append(book);
    XMLAction bare;
    XMLUI page(str("page"));
    page.append(action);
    page.append(bare);
    page.setActionOrgName(1, 2, QString());
    XMLImage image(str("cover"));
    image.setURL(str("file:///covers/1.png?size=2&dpi=300"));
    XMLMessage greeting(str("two\nlines, \"quoted\""));
    XMLPacket packet;
    packet.append(page);
    packet.append(action);
    packet.append(bare);
    packet.append(image);
    const QDomDocument all = packet.append(greeting).ownerDocument();
    QCOMPARE(
        complaints({ action.toString(), XMLUI().toString(), XMLObject::toString(all) }), QString());
}

QTEST_GUILESS_MAIN(tst_Schema)
#include "tst_schema.moc"
