#include "postgres.h"
#include "tqcommserver.h"
#include "tqregistry.h"
#include "tqstorageclass.h"
#include "tqstore.h"
#include "util.h"
#include "xmlpacketable.h"
#include "xpkreference.h"

#include <QSet>

#include <memory>

namespace {

using Item = std::unique_ptr<TQPacketable>;

// Everything that an item says, as one text.
QByteArray describe(const TQKEY_ELEMENT &key, const QByteArray &name, const QByteArray &packet)
{
    const QByteArray keyText = QByteArray::number(key.key) + ':' + QByteArray::number(key.hkey);
    return keyText + ' ' + name + '\n' + packet;
}
QByteArray describe(const TQPacketable &item)
{
    return describe(item.dbkey, item.name, packetOf(item));
}
QByteArray describe(const XMLPacketable &item)
{
    return describe(
        item.getDBkey(), item.getName().toUtf8(), item.toPacket(item.getNodeConst()).toUtf8());
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
    void fields();
    void archives();
    void everyStoredTypeHasItsTableAndColumns();
    void anItemIsInlinedWhereItsKeyStandsAndWhereItsNameStands();
};

void tst_Road::fields()
{
    QByteArray megabyte("& \"mehr\"");  // few of these: QtXml's writer takes its time for each
    while (megabyte.size() < 1024 * 1024) {
        megabyte += ", Grüße an alle, 100 %1 🖨️ –";
    }
    const QByteArray bytes = QByteArray::number(megabyte.size(), 16) + ' ' + megabyte.toBase64();
    const QByteArray samples[] = { "", everyField(), "101 " + megabyte + "\n1701 " + bytes + '\n',
        "101 %1 %2 %99 %%1 %L1\n102   two  and   three\n104 \ta\tb\n108 0x1F\n201 \"a\" 'b' `c`\n"
        "202 a & b &amp; <c> ]]> &#10; -->\n204 Čeština, Ελληνικά, ÿ, e\u0301\n301 SI 63\n"
        "208 🖨️ 👩‍👩‍👧 𝄞\n1601 4 %1 %2\r <a> & \"b\"\r🖨️\r" +
            megabyte + '\n',
        "101 a\nSL 2\nSI 63\n101 b\nSL 0\nTL 0\nTI 0\nSI 6\nTI 0\nTL 0\n102 c\nSI 56\n1 d\nTI 0\n"
        "TI 0\nSI 63\n101 second\nTI 0\nSL 0\nTL 0\nSI 63\n" };
    for (const QByteArray &lines : samples) {
        QByteArray text = "SI 63\n" + lines + "TI 0\n";
        TQPacketable item(PACKETDATATYPE_SPECIMEN);
        QVERIFY(item.fromPacket(text.data(), unsigned(text.size()), false, true));
        item.dbkey = { 0xffffffffU, 1 };
        item.setName("%1 & Söhne");
        XMLPacketable xml;
        xml.setData(item);
        QCOMPARE(describe(xml), describe(item));
        QCOMPARE(describe(*Item(xml.getData())), describe(item));
        // The same over the text of a packet, as another process would read it.
        XMLPacket packet;
        const QDomDocument document = packet.append(item, true).ownerDocument();
        const Xml read(XMLObject::toString(document));
        xml.setData(read.root.firstChildElement(XMLPacket::BODY).firstChild());
        QVERIFY(xml.isCurrent());
        QCOMPARE(describe(xml), describe(item));
    }
}

// Every job with all that it refers to; the profiles have the bytes of the files that they are.
void tst_Road::archives()
{
    TQCommServer server("sqlite::memory:");
    TQLPCOMMANDS command;
    ZQ_MESSAGE_ID message;
    QMap<QString, QByteArray> profiles;  // packet texts by name
    QSet<unsigned> types;
    for (unsigned id = 1; id < 2000; ++id) {
        const std::unique_ptr<ArchiveNode> node(server.getArchiveNode(
            command, message, PACKETDATATYPE_JOB, { id, PACKETDATATYPE_JOB }));
        const std::unique_ptr<XMLPacketable> item(
            XMLPacketable::fromArchiveNode(server, node.get()));
        if (!item) {
            continue;
        }
        QCOMPARE(describe(*item), describe(*node->packetable));  // without what is inlined
        QList<XPKReference *> references;
        QVERIFY(item->getXPKReferences(references));
        for (XPKReference *reference : references) {
            const Item referred(reference->packetable->getData());
            types.insert(referred->datatype);
            if (referred->datatype == PACKETDATATYPE_ICCPROFILE) {
                profiles[reference->packetable->getName()] = packetOf(*referred);
            }
        }
        qDeleteAll(references);
    }
    QVERIFY(profiles.size() >= 2);
    QVERIFY(types.contains(PACKETDATATYPE_OUTPUT));
    QVERIFY(types.contains(PACKETDATATYPE_BOOK));
    for (auto profile = profiles.cbegin(); profile != profiles.cend(); ++profile) {
        QFile file(str("/usr/share/color/icc/") + profile.key() + str(".icc"));
        QVERIFY2(file.open(QIODevice::ReadOnly), "icc-profiles-free is not installed");
        QVERIFY(profile->contains(
            "\n7 " + QByteArray::number(file.size(), 16) + ' ' + file.readAll().toBase64() + '\n'));
    }
}

// Asks for an item of each type. Whether there is one does not matter, but the query must not fail.
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

// A job whose proof profile, named, is the profile that its key denotes.
void tst_Road::anItemIsInlinedWhereItsKeyStandsAndWhereItsNameStands()
{
    QTemporaryDir folder;
    const QByteArray url = "sqlite:" + folder.filePath(str("twice.db")).toUtf8();
    std::string error;
    QVERIFY(TQCreateSampleStore(url.constData(), {}, error));
    sql(url,
        "UPDATE tq_job SET profile_id = (SELECT id FROM tq_icc_profile WHERE name = 'sRGB'), "
        "proof_profile = 'sRGB' WHERE id = 1");
    TQCommServer server(url.constData());
    TQLPCOMMANDS command;
    ZQ_MESSAGE_ID message;
    const TQKEY_ELEMENT job { 1, PACKETDATATYPE_JOB };
    const std::unique_ptr<ArchiveNode> node(
        server.getArchiveNode(command, message, PACKETDATATYPE_JOB, job));
    const std::unique_ptr<XMLPacketable> item(XMLPacketable::fromArchiveNode(server, node.get()));
    const auto profilesIn = [&item](const char *field) {
        const QDomNode fields = XMLPacketable::getPacketableItemNode(item->getNodeConst());
        return fields.firstChildElement(str(field)).childNodes().count();
    };
    QCOMPARE(profilesIn("_4"), 1);
    QCOMPARE(profilesIn("_11"), 1);
}

QTEST_GUILESS_MAIN(tst_Road)
#include "tst_road.moc"
