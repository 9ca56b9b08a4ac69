#include "tqitems.h"

#include "script.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <deque>
#include <memory>
#include <utility>

namespace {

struct FreeRecord
{
    void operator()(Record *record) const { TQPacketFreeItem(&record->list, record->type); }
};

}  // namespace

struct TQPacketable::Fields
{
    std::string name;
    TQSUBRECORD subrecord {};
    std::string lines;  // the item's own, without those that open and close it
    std::unique_ptr<Record, FreeRecord> record;
    std::deque<std::string> names;  // that the chain refers to
    std::deque<TQDB_REFERENCE> chain;

    // Takes over the record, which may be the one that is held already.
    const ScriptRecord &take(const char *call, unsigned char *shown)
    {
        if (record.get() != Record::of(shown)) {
            record.reset(Record::of(shown));
        }
        script().record(call, record->data.name);
        script().untrimmedJobs += record->type == PACKETDATATYPE_JOB && !record->isTrimmed;
        lines = record->data.name.empty() ? "" : "1 " + record->data.name + '\n';
        return record->data;
    }
};

TQPacketable::TQPacketable(PACKETDATATYPES type)
    : subrecord(nullptr), datatype(type), dbkey(TQKEY_CC::getNullKey()), name(nullptr),
      m_fields(new Fields)
{
    script().items.insert(this);
}

TQPacketable::~TQPacketable()
{
    script().wrongFrees += script().items.erase(this) == 0;
    delete m_fields;
}

TQPacketable &TQPacketable::operator=(const TQPacketable &other)
{
    datatype = other.datatype;
    dbkey = other.dbkey;
    setName(other.name);
    m_fields->lines = other.m_fields->lines;
    return *this;
}

void TQPacketable::setName(const char *value)
{
    m_fields->name = value ? value : "";
    name = value ? m_fields->name.data() : nullptr;
}

void TQPacketable::setData(unsigned char *record) { dbkey = m_fields->take("setData", record).key; }

void TQPacketable::loadRecord(unsigned char *record)
{
    const ScriptRecord &data = m_fields->take("loadRecord", record);
    dbkey = data.key;
    setName(data.name.c_str());
    if (datatype == PACKETDATATYPE_OUTPUT) {
        subrecord = script().isFaulty("loadRecord") ? nullptr : &m_fields->subrecord;
        m_fields->subrecord.name = std::exchange(name, nullptr);
    }
}

char *TQPacketable::toPacket(unsigned int &length) const
{
    length = 0;
    if (script().isFaulty("toPacket")) {
        return nullptr;
    }
    char start[16];
    std::snprintf(start, sizeof(start), "SI %x\n", unsigned(datatype));
    const std::string text = start + m_fields->lines + "TI 0\n";
    auto buffer = static_cast<char *>(std::malloc(text.size()));
    script().buffers.insert(buffer);
    length = script().isFaulty("toPacket", "empty") ? 0 : unsigned(text.size());
    std::memcpy(buffer, text.data(), length);
    return buffer;
}

// Takes the flags that the library always passes, and no others.
bool TQPacketable::fromPacket(char *data, unsigned int length, bool first, bool second)
{
    const std::string text(data, length);
    const size_t start = text.find('\n') + 1;
    const size_t end = text.rfind("TI 0\n");
    if (first || !second || script().isFaulty("fromPacket") || text.rfind("SI ", 0) != 0 ||
        end == text.npos) {
        return false;
    }
    m_fields->lines = text.substr(start, end - start);
    return true;
}

void TQPacketable::getReferences(int, TQDB_REFERENCE **head, int)
{
    auto &chain = m_fields->chain;
    chain.clear();
    TQDB_REFERENCE **next = head;
    *head = nullptr;
    std::istringstream lines(script().isFaulty("getReferences") ? "" : m_fields->lines);
    for (std::string tag, value; lines >> tag && std::getline(lines >> std::ws, value);) {
        if (tag != "2" && tag != "3" && tag != "5") {
            continue;
        }
        TQDB_REFERENCE &reference = chain.emplace_back();
        if (tag == "2") {
            reference.name = m_fields->names.emplace_back(value).c_str();
        } else {
            std::sscanf(value.c_str(), "%x %x", &reference.key.key, &reference.key.hkey);
        }
        *next = &reference;
        next = &reference.next;
    }
    *next = script().isFaulty("getReferences", "cycle 0") ? *head : nullptr;
}

BOOK_CC::BOOK_CC() : TQPacketable(PACKETDATATYPE_BOOK) {}
BOOK_CC::~BOOK_CC() = default;

TQJOB_CC::TQJOB_CC() : TQPacketable(PACKETDATATYPE_JOB) {}
TQJOB_CC::~TQJOB_CC() = default;

int TQJOB_CC::pageNumber(const TQJOB *job) { return Record::of(job)->data.page; }

void TQJOB_CC::trimLists(TQJOB *job)
{
    script().record("trimLists", Record::of(job)->data.name);
    Record::of(job)->isTrimmed = true;
}

ICCPROFILEDATA_CC::ICCPROFILEDATA_CC() : TQPacketable(PACKETDATATYPE_ICCPROFILE) {}
ICCPROFILEDATA_CC::~ICCPROFILEDATA_CC() = default;

void ICCPROFILEDATA_CC::load(std::string &host, unsigned short port)
{
    script().record("load", host, port);
    if (!script().isFaulty("load")) {
        std::string text = "SI 30\n4 3 AAAA\nTI 0\n";
        fromPacket(text.data(), unsigned(text.size()), false, true);
    }
}

TQPacketable *PacketableUtil::getPacketable(PACKETDATATYPES type)
{
    if (script().isFaulty("getPacketable") || script().tables.count(type) == 0) {
        return nullptr;
    }
    return type == PACKETDATATYPE_ICCPROFILE ? new ICCPROFILEDATA_CC : new TQPacketable(type);
}

struct ArchiveNode::Children
{
    std::vector<std::unique_ptr<ArchiveNode>> owned;
    std::vector<ArchiveNode *> all;
};

ArchiveNode::ArchiveNode(TQPacketable *item) : packetable(item), m_children(new Children) {}

ArchiveNode::~ArchiveNode()
{
    delete m_children;
    delete packetable;
}

void ArchiveNode::add(ArchiveNode *child)
{
    m_children->all.push_back(child);
    if (script().ownsNodes) {
        m_children->owned.emplace_back(child);
    }
}

ArchiveNode *ArchiveNode::findNode(const TQDB_REFERENCE *reference) const
{
    const auto isMeant = [reference](const ArchiveNode *child) {
        const TQPacketable *item = child->packetable;
        const std::string name = item && item->name ? item->name : "";
        return item &&
            (reference->name ? name == reference->name
                             : item->dbkey.key == reference->key.key &&
                        item->dbkey.hkey == reference->key.hkey);
    };
    const auto &nodes = m_children->all;
    const auto node = std::find_if(nodes.begin(), nodes.end(), isMeant);
    return node == nodes.end() || script().isFaulty("findNode") ? nullptr : *node;
}

TQKEY_ELEMENT TQKEY_CC::getNullKey() { return { 0, 0 }; }

bool TQKEY_CC::isValid(const TQKEY_ELEMENT &key) { return key.key != 0 && key.hkey != 0; }

void TQ_free(void *buffer)
{
    script().wrongFrees += buffer && script().buffers.erase(buffer) == 0;
    std::free(buffer);
}

CONVERTSTRUCTELEMENTINFO *TQGetSystemStorageClassConv(PACKETDATATYPES type)
{
    const auto table = script().tables.find(unsigned(type));
    if (script().isFaulty("TQGetSystemStorageClassConv") || table == script().tables.end()) {
        return nullptr;
    }
    Script::Table &fields = table->second;
    if (fields.empty() || fields.back().type != 0) {
        fields.push_back({});
    }
    return fields.data();
}
