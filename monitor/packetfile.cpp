#include "packetfile.h"

#include "packetlog.h"

#include <QCoreApplication>
#include <QIODevice>
#include <QXmlStreamReader>
#include <QXmlStreamWriter>

#include <algorithm>

namespace TQXmlInternal {

namespace {

const QString NAMESPACE = QStringLiteral("urn:tqxml:packets:1");
const QString PACKETS = QStringLiteral("packets");
const QString PACKET = QStringLiteral("packet");
const QString AGENT = QStringLiteral("agent");
const QString NAME = QStringLiteral("name");
const QString BEGINNING = QStringLiteral("beginning");

const QString AGENT_ID = QStringLiteral("agent_id");
const QString AGENT_TYPE = QStringLiteral("agent_type");
const QString DELIVERY = QStringLiteral("delivery");
const QString DESTINATION = QStringLiteral("dst");
const QString DROPPED = QStringLiteral("dropped");
const QString REPLIES_TO = QStringLiteral("replies_to");
const QString SIZE = QStringLiteral("size");
const QString SOURCE = QStringLiteral("src");
const QString STATE = QStringLiteral("state");
const QString TEXT = QStringLiteral("text");
const QString TIME = QStringLiteral("time");

const char *const STATES[] = { "waiting", "delivered", "lost", "source_unknown", "equals_last",
    "sent_already", "added", "removed", "supplied" };
static_assert(std::size(STATES) == PacketRecord::StateCount, "one word a state");

constexpr qint64 MAX_FILE = 4 * PacketLog::MAX_BYTES;

void writeNumber(QXmlStreamWriter &writer, const QString &name, qint64 number)
{
    writer.writeAttribute(name, QString::number(number));
}

void writeText(QXmlStreamWriter &writer, const PacketRecord &record)
{
    if (record.isCut()) {
        writer.writeTextElement(BEGINNING, QString::fromUtf8(record.text));
    } else if (!record.text.isEmpty()) {
        writer.writeCharacters(QStringLiteral("\n"));
        writer.device()->write(record.text);  // is XML already
    }
}

void writePacket(QXmlStreamWriter &writer, const PacketRecord &record, qint64 number)
{
    writer.writeStartElement(PACKET);
    writeNumber(writer, TIME, record.time);
    writer.writeAttribute(STATE, QLatin1String(STATES[record.state]));
    writeNumber(writer, SOURCE, record.source);
    writeNumber(writer, DESTINATION, record.destination);
    writeNumber(writer, SIZE, record.size);
    if (record.delivery >= 0) {
        writeNumber(writer, DELIVERY, record.delivery);
    }
    if (record.isReply) {
        writeNumber(writer, REPLIES_TO, number - record.partner);
    }
    writeText(writer, record);
    writer.writeEndElement();
}

void writeAgent(QXmlStreamWriter &writer, const PacketRecord &record)
{
    writer.writeEmptyElement(AGENT);
    writeNumber(writer, AGENT_ID, record.source);
    writeNumber(writer, AGENT_TYPE, record.destination);
    writeNumber(writer, TIME, record.time);
    writer.writeAttribute(STATE, QLatin1String(STATES[record.state]));
}

// Reads a file; what is wrong with it becomes the reader's error.
class FileReader
{
public:
    explicit FileReader(const QString &document) : m_document(document), m_reader(document) {}

    QString read();

    std::vector<PacketRecord> records;
    QHash<int, QString> names;

private:
    void complain(const QString &text, const QString &attribute);
    qint64 number(const QString &name, qint64 least = 0);
    PacketRecord::State state(int first, int last);
    void readName();
    void readAgent();
    void readPacket();
    void readText(PacketRecord &record);
    void pairWithRequest(PacketRecord &reply);

    const QString m_document;
    QXmlStreamReader m_reader;
};

QString FileReader::read()
{
    if (!m_reader.readNextStartElement() || m_reader.namespaceUri() != NAMESPACE ||
        m_reader.name() != PACKETS) {
        return QCoreApplication::translate("XMLMonitor", "This is not a file of packets.");
    }
    while (m_reader.readNextStartElement()) {
        if (m_reader.name() == NAME) {
            readName();
        } else if (m_reader.name() == AGENT) {
            readAgent();
        } else {
            readPacket();
        }
    }
    return m_reader.hasError()
        ? QCoreApplication::translate("XMLMonitor", "The file is damaged, line %1: %2")
              .arg(QString::number(m_reader.lineNumber()), m_reader.errorString())
        : QString();
}

// Of several complaints the first one counts.
void FileReader::complain(const QString &text, const QString &attribute)
{
    if (!m_reader.hasError()) {
        m_reader.raiseError(text.arg(attribute));
    }
}

qint64 FileReader::number(const QString &name, qint64 least)
{
    bool isNumber = false;
    const qint64 value = m_reader.attributes().value(name).toString().toLongLong(&isNumber);
    if (!isNumber || value < least) {
        complain(QCoreApplication::translate("XMLMonitor", "attribute %1 is no such number"), name);
    }
    return value;
}

// The state that the element names, which is one from first to last.
PacketRecord::State FileReader::state(int first, int last)
{
    const QString text = m_reader.attributes().value(STATE).toString();
    for (int i = first; i <= last; ++i) {
        if (text == QLatin1String(STATES[i])) {
            return PacketRecord::State(i);
        }
    }
    complain(QCoreApplication::translate("XMLMonitor", "attribute %1 is no state"), STATE);
    return PacketRecord::State(first);
}

void FileReader::readName()
{
    const int agentID = int(number(AGENT_ID, std::numeric_limits<int>::min()));
    names[agentID] = m_reader.attributes().value(TEXT).toString();
    m_reader.skipCurrentElement();
}

void FileReader::readAgent()
{
    PacketRecord record;
    record.kind = PacketRecord::Agent;
    record.time = number(TIME);
    record.source = int(number(AGENT_ID, std::numeric_limits<int>::min()));
    record.destination = int(number(AGENT_TYPE, std::numeric_limits<int>::min()));
    record.state = state(PacketRecord::AgentAdded, PacketRecord::AgentSupplied);
    records.push_back(record);
    m_reader.skipCurrentElement();
}

void FileReader::readPacket()
{
    PacketRecord record;
    record.kind = PacketRecord::NotKept;
    record.time = number(TIME);
    record.source = int(number(SOURCE, std::numeric_limits<int>::min()));
    record.destination = int(number(DESTINATION, std::numeric_limits<int>::min()));
    record.size = number(SIZE);
    record.state = state(PacketRecord::Waiting, PacketRecord::SentAlready);
    if (m_reader.attributes().hasAttribute(DELIVERY)) {
        record.delivery = number(DELIVERY);
    }
    if (m_reader.attributes().hasAttribute(REPLIES_TO)) {
        pairWithRequest(record);
    }
    while (m_reader.readNextStartElement()) {
        readText(record);
        record.kind = PacketRecord::kindOf(record.text);
    }
    records.push_back(record);
}

// Until all are read, a partner is the place in `records`.
void FileReader::pairWithRequest(PacketRecord &reply)
{
    const qint64 place = qint64(records.size()) - number(REPLIES_TO, 1);
    if (place < 0) {
        return;  // the request was dropped before the file was written
    }
    PacketRecord &request = records[size_t(place)];
    request.partner = qint64(records.size());
    reply.partner = place;
    reply.isReply = true;
    reply.answer = request.answer = reply.time - request.time;
}

void FileReader::readText(PacketRecord &record)
{
    if (m_reader.namespaceUri() == NAMESPACE && m_reader.name() == BEGINNING) {
        record.text = m_reader.readElementText().toUtf8();
        return;
    }
    const int offset = int(m_reader.characterOffset());
    const int begin = int(m_document.lastIndexOf(QLatin1Char('<'), offset - 1));
    m_reader.skipCurrentElement();
    const int length = int(m_reader.characterOffset()) - begin;
    record.text = m_document.mid(begin, length).toUtf8() + '\n';
}

}  // namespace

bool writePackets(const PacketLog &log, QIODevice &device)
{
    QXmlStreamWriter writer(&device);
    writer.setAutoFormatting(true);
    writer.setAutoFormattingIndent(0);
    writer.writeStartDocument();
    writer.writeDefaultNamespace(NAMESPACE);
    writer.writeStartElement(NAMESPACE, PACKETS);
    writeNumber(writer, DROPPED, log.dropped());
    for (auto name = log.agentNames().begin(); name != log.agentNames().end(); ++name) {
        writer.writeEmptyElement(NAME);
        writeNumber(writer, AGENT_ID, name.key());
        writer.writeAttribute(TEXT, name.value());
    }
    for (qint64 number = log.first(); number < log.end(); ++number) {
        const PacketRecord &record = *log.find(number);
        if (record.isPacket()) {
            writePacket(writer, record, number);
        } else {
            writeAgent(writer, record);
        }
    }
    writer.writeEndDocument();
    return !writer.hasError();
}

QString readPackets(QIODevice &device, PacketLog &log)
{
    if (device.size() > MAX_FILE) {
        return QCoreApplication::translate("XMLMonitor", "The file is too large.");
    }
    FileReader reader(QString::fromUtf8(device.readAll()));
    const QString problem = reader.read();
    if (!problem.isEmpty()) {
        return problem;
    }
    log.clear();
    const qint64 first = log.end();
    for (auto name = reader.names.begin(); name != reader.names.end(); ++name) {
        log.setAgentName(name.key(), name.value());
    }
    for (PacketRecord &record : reader.records) {
        record.partner += record.partner < 0 ? 0 : first;
        log.append(record);
    }
    return QString();
}

}  // namespace TQXmlInternal
