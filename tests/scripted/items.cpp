#include "records_p.h"
#include "tqitems.h"

#include <cstdlib>
#include <cstring>
#include <deque>
#include <sstream>
#include <utility>

namespace {

void assign(char *&text, const char *value)
{
    char *copy = value ? strdup(value) : nullptr;
    std::free(text);
    text = copy;
}

std::string hex(unsigned number)
{
    std::ostringstream out;
    out << std::hex << number;
    return out.str();
}

unsigned typeCodeOf(PACKETDATATYPES type, unsigned tag)
{
    const auto table = script().tables.find(type);
    for (size_t i = 0; table != script().tables.end() && i < table->second.size(); ++i) {
        if (table->second[i].tag == tag) {
            return table->second[i].type;
        }
    }
    return 0;
}

std::string asText(const char *value) { return value ? value : "(null)"; }

void freeRecord(Record *record)
{
    if (record) {
        Record::destroy(record, record->family);
    }
}

}  // namespace

struct TQPacketable::Fields
{
    std::string lines;  // the item's own, without those that open and close it
    Record *record = nullptr;
    std::deque<std::string> names;
    std::deque<TQDB_REFERENCE> chain;

    // Takes over the record, which may be the one that is held already.
    Record *take(unsigned char *shown)
    {
        if (Record *const old = std::exchange(record, Record::of(shown)); old != record) {
            freeRecord(old);
        }
        lines = record && !record->data.name.empty() ? "1 " + record->data.name + '\n' : "";
        return record;
    }
};

TQPacketable::TQPacketable(PACKETDATATYPES type)
    : subrecord(nullptr), datatype(type), dbkey(TQKEY_CC::getNullKey()), name(nullptr),
      m_fields(new Fields)
{
    script().items.insert(this);
}

TQPacketable::TQPacketable(const TQPacketable &other) : TQPacketable(other.datatype)
{
    operator=(other);
}

TQPacketable::~TQPacketable()
{
    script().wrongFrees += script().items.erase(this) == 0;
    assign(name, nullptr);
    if (subrecord) {
        assign(subrecord->name, nullptr);
        delete subrecord;
    }
    freeRecord(m_fields->record);
    delete m_fields;
}

char *TQPacketable::toPacket(unsigned int &length) const
{
    script().record("toPacket " + std::to_string(datatype));
    length = 0;
    if (script().isFaulty("toPacket")) {
        return nullptr;
    }
    const std::string text = "SI " + hex(datatype) + '\n' + m_fields->lines + "TI 0\n";
    auto buffer = static_cast<char *>(std::malloc(text.size()));
    script().buffers.insert(buffer);
    std::memcpy(buffer, text.data(), text.size());
    length = script().isFaulty("toPacket", "empty") ? 0 : static_cast<unsigned>(text.size());
    return buffer;
}

bool TQPacketable::fromPacket(char *data, unsigned int length, bool first, bool second)
{
    script().record("fromPacket " + std::to_string(first) + ' ' + std::to_string(second));
    const std::string text(data, length);
    const size_t start = text.find('\n');
    const size_t end = text.rfind("TI 0\n");
    if (script().isFaulty("fromPacket") || text.compare(0, 3, "SI ") != 0 ||
        end == std::string::npos) {
        return false;
    }
    m_fields->lines = text.substr(start + 1, end - start - 1);
    return true;
}

void TQPacketable::loadRecord(unsigned char *shown)
{
    const Record *record = m_fields->take(shown);
    script().record("loadRecord " + record->data.name);
    dbkey = record->data.key;
    if (datatype == PACKETDATATYPE_OUTPUT) {
        subrecord = subrecord ? subrecord : new TQSUBRECORD {};
        assign(subrecord->name, record->data.name.c_str());
    } else {
        assign(name, record->data.name.c_str());
    }
}

void TQPacketable::setData(unsigned char *shown)
{
    const Record *record = m_fields->take(shown);
    script().record("setData " + record->data.name);
    dbkey = record->data.key;
}

void TQPacketable::getReferences(int first, TQDB_REFERENCE **head, int third)
{
    script().record("getReferences " + std::to_string(first) + ' ' + std::to_string(third));
    m_fields->chain.clear();
    std::istringstream lines(m_fields->lines);
    for (std::string line; std::getline(lines, line);) {
        const size_t blank = line.find(' ');
        const unsigned code =
            typeCodeOf(datatype, static_cast<unsigned>(std::strtoul(line.c_str(), nullptr, 16)));
        TQDB_REFERENCE reference {};
        if (code == 14) {
            std::istringstream(line.substr(blank)) >> std::hex >> reference.key.key >>
                reference.key.hkey;
        } else if (code == 9) {
            reference.name = m_fields->names.emplace_back(line.substr(blank + 1)).c_str();
        } else {
            continue;
        }
        m_fields->chain.push_back(reference);
    }
    auto &chain = m_fields->chain;
    for (size_t i = 1; i < chain.size(); ++i) {
        chain[i - 1].next = &chain[i];
    }
    *head = chain.empty() || script().isFaulty("getReferences") ? nullptr : &chain.front();
    if (*head && script().isFaulty("getReferences", "cycle 0")) {
        chain.back().next = *head;
    }
}

TQPacketable &TQPacketable::operator=(const TQPacketable &other)
{
    script().record("operator=");
    if (this != &other) {
        datatype = other.datatype;
        dbkey = other.dbkey;
        assign(name, other.name);
        m_fields->lines = other.m_fields->lines;
    }
    return *this;
}

void TQPacketable::setName(const char *value)
{
    script().record("setName " + asText(value));
    assign(name, value);
}

BOOK_CC::BOOK_CC() : TQPacketable(PACKETDATATYPE_BOOK) {}
BOOK_CC::~BOOK_CC() = default;

TQJOB_CC::TQJOB_CC() : TQPacketable(PACKETDATATYPE_JOB) {}
TQJOB_CC::~TQJOB_CC() = default;

int TQJOB_CC::pageNumber(const TQJOB *job) { return Record::of(job)->data.page; }

void TQJOB_CC::trimLists(TQJOB *job) { script().record("trimLists " + Record::of(job)->data.name); }

ICCPROFILEDATA_CC::ICCPROFILEDATA_CC() : TQPacketable(PACKETDATATYPE_ICCPROFILE) {}
ICCPROFILEDATA_CC::~ICCPROFILEDATA_CC() = default;

void ICCPROFILEDATA_CC::load(std::string &host, unsigned short port)
{
    script().record("load " + host + ' ' + std::to_string(port));
    if (!script().isFaulty("load")) {
        std::string text = "SI 30\n4 3 AAAA\nTI 0\n";
        fromPacket(text.data(), static_cast<unsigned>(text.size()), false, true);
    }
}

TQPacketable *PacketableUtil::getPacketable(PACKETDATATYPES type)
{
    script().record("getPacketable " + std::to_string(type));
    if (script().isFaulty("getPacketable") || script().tables.count(type) == 0) {
        return nullptr;
    }
    switch (type) {
    case PACKETDATATYPE_BOOK:
        return new BOOK_CC;
    case PACKETDATATYPE_JOB:
        return new TQJOB_CC;
    case PACKETDATATYPE_ICCPROFILE:
        return new ICCPROFILEDATA_CC;
    default:
        return new TQPacketable(type);
    }
}

struct ArchiveNode::Children
{
    std::vector<ArchiveNode *> owned;
    std::map<std::pair<unsigned, unsigned>, ArchiveNode *> byKey;
    std::map<std::string, ArchiveNode *> byName;

    void link(ArchiveNode *child)
    {
        if (const TQPacketable *item = child->packetable) {
            byKey.emplace(std::make_pair(item->dbkey.key, item->dbkey.hkey), child);
            byName.emplace(asText(item->name), child);
        }
    }
};

ArchiveNode::ArchiveNode(TQPacketable *item) : packetable(item), m_children(new Children) {}

ArchiveNode::~ArchiveNode()
{
    for (const ArchiveNode *child : m_children->owned) {
        delete child;
    }
    delete m_children;
    delete packetable;
}

void ArchiveNode::add(ArchiveNode *child)
{
    if (script().ownsNodes) {
        m_children->owned.push_back(child);
    }
    m_children->link(child);
}

ArchiveNode *ArchiveNode::findNode(const TQDB_REFERENCE *reference) const
{
    if (script().isFaulty("findNode")) {
        return nullptr;
    }
    if (reference->name) {
        const auto found = m_children->byName.find(reference->name);
        return found == m_children->byName.end() ? nullptr : found->second;
    }
    const auto found = m_children->byKey.find({ reference->key.key, reference->key.hkey });
    return found == m_children->byKey.end() ? nullptr : found->second;
}

TQKEY_ELEMENT TQKEY_CC::getNullKey() { return { 0, 0 }; }

bool TQKEY_CC::isValid(const TQKEY_ELEMENT &key) { return key.key != 0 && key.hkey != 0; }

void TQ_free(void *buffer)
{
    script().record("TQ_free");
    script().wrongFrees += buffer && script().buffers.erase(buffer) == 0;
    std::free(buffer);
}

CONVERTSTRUCTELEMENTINFO *TQGetSystemStorageClassConv(PACKETDATATYPES type)
{
    script().record("TQGetSystemStorageClassConv " + std::to_string(type));
    const auto table = script().tables.find(type);
    if (script().isFaulty("TQGetSystemStorageClassConv") || table == script().tables.end()) {
        return nullptr;
    }
    Script::Table &fields = table->second;
    if (fields.empty() || fields.back().type != 0) {
        fields.push_back({});
    }
    return fields.data();
}
