// Items. They keep the packet text that they were filled with, and read it only when they are asked
// for references.

#include "shop.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <set>
#include <tqitems.h>
#include <utility>

struct TQPacketable::Fields
{
    std::string text;  // empty without any field
    Record *record = nullptr;  // owned
    std::string name;
    std::string outputName;
    TQSUBRECORD subrecord = {};
    std::vector<TQDB_REFERENCE> chain;
    std::set<std::pair<unsigned int, std::string>> referred;  // in the chain: type code and value
};

TQPacketable::TQPacketable(PACKETDATATYPES type)
    : subrecord(nullptr), datatype(type), dbkey(TQKEY_CC::getNullKey()), name(nullptr),
      m_fields(new Fields)
{
}

TQPacketable::TQPacketable(const TQPacketable &other) : TQPacketable() { *this = other; }

TQPacketable::~TQPacketable()
{
    delete m_fields->record;
    delete m_fields;
}

TQPacketable &TQPacketable::operator=(const TQPacketable &other)
{
    if (this != &other) {
        datatype = other.datatype;
        dbkey = other.dbkey;
        setName(other.name);
        m_fields->text = other.m_fields->text;
        m_fields->outputName = other.m_fields->outputName;
        m_fields->subrecord.name = m_fields->outputName.data();
        subrecord = other.subrecord ? &m_fields->subrecord : nullptr;
    }
    return *this;
}

void TQPacketable::setName(const char *text)
{
    const bool isNamed = text != nullptr;
    m_fields->name = isNamed ? std::string(text) : std::string();  // a copy: it may be our own name
    name = isNamed ? m_fields->name.data() : nullptr;
}

void TQPacketable::setData(unsigned char *shown)
{
    Record *const record = Record::of(shown);
    if (record != m_fields->record) {
        delete m_fields->record;
        m_fields->record = record;
    }
    const bool fits = record && record->row.key.hkey == datatype;
    const bool isOutput = fits && datatype == PACKETDATATYPE_OUTPUT;
    dbkey = fits ? record->row.key : TQKEY_CC::getNullKey();
    m_fields->text = fits ? writeItem(datatype, record->row.values) : std::string();
    m_fields->outputName = isOutput ? record->row.name : std::string();
    m_fields->subrecord.name = m_fields->outputName.data();
    subrecord = isOutput ? &m_fields->subrecord : nullptr;
}

void TQPacketable::loadRecord(unsigned char *shown)
{
    setData(shown);
    // The name of an output is in its sub-record instead.
    const bool isNamed = TQKEY_CC::isValid(dbkey) && !subrecord;
    setName(isNamed ? m_fields->record->row.name.c_str() : nullptr);
}

char *TQPacketable::toPacket(unsigned int &length) const
{
    const std::string text = m_fields->text.empty() ? writeItem(datatype, {}) : m_fields->text;
    length = 0;
    const auto buffer = static_cast<char *>(std::malloc(text.size()));
    if (buffer) {
        std::memcpy(buffer, text.data(), text.size());
        length = static_cast<unsigned int>(text.size());
    }
    return buffer;
}

bool TQPacketable::fromPacket(char *data, unsigned int length, bool, bool)
{
    const std::string_view text(data, length);
    if (!isItem(text, datatype)) {
        return false;
    }
    m_fields->text = text;
    return true;
}

void TQPacketable::getReferences(int, TQDB_REFERENCE **head, int)
{
    std::vector<TQDB_REFERENCE> &chain = m_fields->chain;
    chain.clear();
    m_fields->referred.clear();
    for (const Field &line : fieldsOf(m_fields->text)) {
        const CONVERTSTRUCTELEMENTINFO *field = findField(datatype, line.tag);
        if (!field || (field->type != TQELEMENT_KEY && field->type != TQELEMENT_NAME)) {
            continue;
        }
        const auto [entry, isNew] = m_fields->referred.emplace(field->type, line.value);
        const char *const value = entry->second.c_str();
        TQDB_REFERENCE reference = { nullptr, PACKETDATATYPES(field->reserved0), {}, nullptr };
        if (field->type == TQELEMENT_NAME) {
            reference.name = value;
        } else {
            std::sscanf(value, "%x %x", &reference.key.key, &reference.key.hkey);
        }
        if (isNew && (reference.name || TQKEY_CC::isValid(reference.key))) {
            chain.push_back(reference);
        }
    }
    for (size_t i = 1; i < chain.size(); ++i) {
        chain[i - 1].next = &chain[i];
    }
    if (head) {
        *head = chain.empty() ? nullptr : chain.data();
    }
}

BOOK_CC::BOOK_CC() : TQPacketable(PACKETDATATYPE_BOOK) {}
BOOK_CC::~BOOK_CC() = default;
TQJOB_CC::TQJOB_CC() : TQPacketable(PACKETDATATYPE_JOB) {}
TQJOB_CC::~TQJOB_CC() = default;
ICCPROFILEDATA_CC::ICCPROFILEDATA_CC() : TQPacketable(PACKETDATATYPE_ICCPROFILE) {}
ICCPROFILEDATA_CC::~ICCPROFILEDATA_CC() = default;
