#include "archivenode.h"
#include "tqcommserver.h"
#include "tqregistry.h"
#include "tqstorageclass.h"
#include "util.h"
#include "xmlpacketable.h"

#include <memory>

namespace {

// Everything that an item says, as one text.
QByteArray describe(const TQPacketable &item)
{
    const QByteArray key =
        QByteArray::number(item.dbkey.key) + ':' + QByteArray::number(item.dbkey.hkey);
    return key + ' ' + QByteArray(item.name) + '\n' + packetOf(item);
}
QByteArray describe(XMLPacketable &item)
{
    return describe(*std::unique_ptr<TQPacketable>(item.getData()));
}

// Values by element type code; empty for the codes that have no text form.
const char *const VALUES[] = { "", "Tom & \"Jerry\" <100%>", "id-0042", "offset", "2024-02-29",
    "-9", "17", "7", "-0.5", "Heidelberg <1>", "", "841.89", "en-GB", "12", "1f ff", "3 1.5 -2 0",
    "2 1 2", "2 -3 4", "1 5", "0 ", "3", "65", "2 a b\rc", "4 AAECAw==", "2024-02-29T12:00:00Z",
    "see  below", "", "2 595.276 841.89", "/srv/a b.pdf", "99", "1 8", "a 1 2 3 4 5 6 7 8 9 10" };

// Every field of the specimen.
QByteArray everyField()
{
    QByteArray lines;
    for (auto field = TQGetSystemStorageClassConv(PACKETDATATYPE_SPECIMEN); field->type; ++field) {
        const QByteArray value = VALUES[field->type];
        lines += value.isEmpty() ? value : QByteArray::number(field->tag, 16) + ' ' + value + '\n';
    }
    return lines;
}

}  // namespace

// The whole way of items: from packet text to XML and back.
class tst_Road : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void everyFieldComesBack_data();
    void everyFieldComesBack();
    void everyStoredTypeHasItsTableAndColumns();
};

void tst_Road::everyFieldComesBack_data()
{
    QByteArray large("& \"mehr\"");  // few of these: QtXml's writer takes its time for each
    while (large.size() < 1024 * 1024) {
        large += ", Grüße an alle, 100 %1 🖨️ –";
    }
    const QByteArray bytes = QByteArray::number(large.size(), 16) + ' ' + large.toBase64();
    QTest::addColumn<QByteArray>("lines");
    QTest::newRow("no field") << QByteArray();
    QTest::newRow("every type code at every width") << everyField();
    QTest::newRow("a megabyte") << "101 " + large + "\n1701 " + bytes + "\n1601 1 " + large + '\n';
    QTest::newRow("places of arguments")
        << QByteArray("101 %1 %2 %99 %%1 %L1\n1601 2 %1 %2\r %3\n");
    QTest::newRow("blanks and tabs") << QByteArray("102   two  and   three\n104 \ta\tb\n");
    QTest::newRow("markup") << QByteArray("201 \"a\" 'b'\n202 a & &amp; <c> ]]> &#10; -->\n");
    QTest::newRow("all planes of Unicode") << QByteArray(
        "204 Čeština, Ελληνικά, ÿ, e\u0301\n208 🖨️ 👩‍👩‍👧 𝄞\n1601 2 "
        "🖨️\rß\n");
    QTest::newRow("text like packet text") << QByteArray("108 0x1F\n301 SI 63\n");
    QTest::newRow("items and lists inside, and a second item behind")
        << QByteArray("101 a\nSL 2\nSI 63\n101 b\nSL 0\nTL 0\nTI 0\nSI 6\nTI 0\nTL 0\n102 c\n"
                      "SI 56\n1 d\nTI 0\nTI 0\nSI 63\n101 second\nTI 0\nSL 0\nTL 0\nSI 63\n");
}

void tst_Road::everyFieldComesBack()
{
    QFETCH(QByteArray, lines);
    QByteArray text = "SI 63\n" + lines + "TI 0\n";
    TQPacketable item(PACKETDATATYPE_SPECIMEN);
    QVERIFY(item.fromPacket(text.data(), unsigned(text.size()), false, true));
    item.dbkey = { 0xffffffffU, 1 };
    item.setName("%1 & Söhne");
    XMLPacketable xml;
    xml.setData(item);
    QCOMPARE(xml.toPacket(xml.getNodeConst()).toUtf8(), text);
    QCOMPARE(describe(xml), describe(item));

    // Over the text of a packet, as another process would read it.
    XMLPacket packet;
    const Xml read(XMLObject::toString(packet.append(item, true).ownerDocument()));
    xml.setData(read.root.firstChildElement(XMLPacket::BODY).firstChild());
    QVERIFY(xml.isCurrent());
    QCOMPARE(describe(xml), describe(item));
}

void tst_Road::everyStoredTypeHasItsTableAndColumns()
{
    TQCommServer server("sqlite::memory:");
    for (unsigned number = 0; number < 0x100; ++number) {
        const auto type = PACKETDATATYPES(number);
        TQLPCOMMANDS command;
        ZQ_MESSAGE_ID message;
        delete server.getArchiveNode(command, message, type, { 1, type });
        QCOMPARE(str(server.errorText()), QString());
    }
}

QTEST_GUILESS_MAIN(tst_Road)
#include "tst_road.moc"
