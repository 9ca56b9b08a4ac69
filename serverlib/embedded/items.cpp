// Items: the classes that tqpacketable.h and tqitems.h declare, and the factory that makes them. An
// item of any data type keeps its fields as packet text; what fields there can be, its storage
// class says. So most types need no class of their own.

#include "tqitems.h"

#include "elementcodes_p.h"
#include "itemtext_p.h"
#include "openstore_p.h"
#include "records_p.h"
#include "rows_p.h"
#include "storageclass_p.h"

#include <cstdlib>
#include <cstring>
#include <deque>
#include <limits>
#include <memory>
#include <set>
#include <tuple>
#include <vector>

using namespace TQServerInternal;

namespace {

char *copyText(const char *text)
{
    const size_t size = std::strlen(text) + 1;
    char *copy = new char[size];
    std::memcpy(copy, text, size);
    return copy;
}

// Replaces an owned text by a copy of another, which may be the same; null for none.
void assignText(char *&text, const char *value)
{
    char *copy = value ? copyText(value) : nullptr;
    delete[] text;
    text = copy;
}

void assignSubrecord(TQSUBRECORD *&subrecord, const char *name)
{
    TQSUBRECORD *copy = name ? new TQSUBRECORD { copyText(name) } : nullptr;
    if (subrecord) {
        delete[] subrecord->name;
        delete subrecord;
    }
    subrecord = copy;
}

// An entry of the outputs list has the fields of its output; every other item loads records of its
// own type only.
bool isOfType(const ListRecord *record, PACKETDATATYPES type)
{
    return record->type == type ||
        (type == PACKETDATATYPE_OUTPUTLIST && record->type == PACKETDATATYPE_OUTPUT);
}

std::optional<TQDB_REFERENCE> keyReference(const TQSTORAGEFIELD &field, std::string_view value)
{
    const auto words = splitAtBlank(value);
    if (!words) {
        return {};  // the type was registered again, with another table, since the item was filled
    }
    const TQKEY_ELEMENT key { readHex(words->first).value_or(0),
        readHex(words->second).value_or(0) };
    if (!TQKEY_CC::isValid(key)) {
        return {};
    }
    return TQDB_REFERENCE { nullptr, field.refers, key, nullptr };
}

// The bytes of the profile with that key; without a valid key, of the profile with that name.
std::optional<BinaryField> readProfile(OpenStore &store, const TQKEY_ELEMENT &key, const char *name)
{
    const StorageClass &profiles = *storageClass(PACKETDATATYPE_ICCPROFILE);
    const bool isByKey = TQKEY_CC::isValid(key);
    const bool isProfile = isByKey ? key.hkey == profiles.type() : name != nullptr;
    if (!isProfile) {
        return {};
    }
    if (!store.reach()) {
        store.fail();
        return {};
    }
    if (isByKey) {
        return readBinaryField(store, profiles, "id", key.key);
    }
    return readBinaryField(store, profiles, "name", QString::fromUtf8(name));
}

}  // namespace

struct TQPacketable::Fields
{
    std::string text;  // checked packet text; empty when no field has a value
    ListRecord *record = nullptr;  // what the fields were loaded from; owned
    OpenStore::Number store = 0;  // where the fields came from; 0 when that is not known
    std::vector<TQDB_REFERENCE> chain;
    std::deque<std::string> names;  // what the chain points at
};

TQPacketable::TQPacketable(PACKETDATATYPES type)
    : subrecord(nullptr), datatype(type), dbkey(TQKEY_CC::getNullKey()), name(nullptr),
      m_fields(new Fields)
{
}

TQPacketable::TQPacketable(const TQPacketable &other) : TQPacketable() { operator=(other); }

TQPacketable::~TQPacketable()
{
    assignSubrecord(subrecord, nullptr);
    assignText(name, nullptr);
    ListRecord::destroy(m_fields->record);
    delete m_fields;
}

char *TQPacketable::toPacket(unsigned int &length) const
{
    length = 0;
    std::string withoutFields;
    if (m_fields->text.empty()) {
        withoutFields = writeItem(datatype, {});
    }
    const std::string &text = m_fields->text.empty() ? withoutFields : m_fields->text;
    if (text.size() > std::numeric_limits<unsigned>::max()) {
        return nullptr;
    }
    const auto buffer = static_cast<char *>(std::malloc(text.size()));
    if (buffer) {
        std::memcpy(buffer, text.data(), text.size());
        length = static_cast<unsigned>(text.size());
    }
    return buffer;
}

bool TQPacketable::fromPacket(char *data, unsigned int length, bool, bool)
{
    const std::string_view text(data ? data : "", data ? length : 0);
    auto item = checkItem(text, datatype);
    if (!item) {
        return false;
    }
    m_fields->text = std::move(*item);
    return true;
}

void TQPacketable::loadRecord(unsigned char *record)
{
    setData(record);
    // An output's name is in the sub-record instead.
    const bool isNamed = m_fields->record && !subrecord;
    setName(isNamed ? m_fields->record->name.c_str() : nullptr);
}

void TQPacketable::setData(unsigned char *record)
{
    ListRecord *loaded = ListRecord::of(record);
    if (loaded != m_fields->record) {
        ListRecord::destroy(m_fields->record);
        m_fields->record = loaded;
    }
    const bool fits = loaded && isOfType(loaded, datatype);
    m_fields->store = fits ? loaded->store : 0;
    m_fields->text = fits ? writeItem(datatype, loaded->fields) : std::string();
    dbkey = fits ? loaded->key : TQKEY_CC::getNullKey();
    const bool isOutput = fits && datatype == PACKETDATATYPE_OUTPUT;
    assignSubrecord(subrecord, isOutput ? loaded->name.c_str() : nullptr);
}

void TQPacketable::getReferences(int, TQDB_REFERENCE **head, int)
{
    Fields &fields = *m_fields;
    fields.chain.clear();
    fields.names.clear();
    const StorageClass *known = storageClass(datatype);
    std::set<std::tuple<unsigned, unsigned, std::string_view>> seen;
    forEachField(fields.text, [&](unsigned tag, std::string_view value) {
        const TQSTORAGEFIELD *field = known ? known->find(tag) : nullptr;
        if (field && !seen.emplace(field->type, field->refers, value).second) {
            return;
        }
        if (field && field->type == TQELEMENT_KEY) {
            if (const auto reference = keyReference(*field, value)) {
                fields.chain.push_back(*reference);
            }
        } else if (field && field->type == TQELEMENT_NAME) {
            fields.chain.push_back({ nullptr, field->refers, TQKEY_CC::getNullKey(),
                fields.names.emplace_back(value).c_str() });
        }
    });
    for (size_t i = 1; i < fields.chain.size(); ++i) {
        fields.chain[i - 1].next = &fields.chain[i];
    }
    if (head) {
        *head = fields.chain.empty() ? nullptr : fields.chain.data();
    }
}

TQPacketable &TQPacketable::operator=(const TQPacketable &other)
{
    if (this != &other) {
        assignSubrecord(subrecord, other.subrecord ? other.subrecord->name : nullptr);
        datatype = other.datatype;
        dbkey = other.dbkey;
        assignText(name, other.name);
        m_fields->store = other.m_fields->store;
        m_fields->text = other.m_fields->text;
    }
    return *this;
}

void TQPacketable::setName(const char *value) { assignText(name, value); }

BOOK_CC::BOOK_CC() : TQPacketable(PACKETDATATYPE_BOOK) {}

BOOK_CC::~BOOK_CC() = default;

TQJOB_CC::TQJOB_CC() : TQPacketable(PACKETDATATYPE_JOB) {}

TQJOB_CC::~TQJOB_CC() = default;

int TQJOB_CC::pageNumber(const TQJOB *job)
{
    const ListRecord *record = ListRecord::of(job);
    return record ? record->page : 0;
}

void TQJOB_CC::trimLists(TQJOB *job)
{
    if (ListRecord *record = ListRecord::of(job)) {
        record->fields.shrink_to_fit();
    }
}

ICCPROFILEDATA_CC::ICCPROFILEDATA_CC() : TQPacketable(PACKETDATATYPE_ICCPROFILE) {}

ICCPROFILEDATA_CC::~ICCPROFILEDATA_CC() = default;

void ICCPROFILEDATA_CC::load(std::string &host, unsigned short port)
{
    struct Free
    {
        void operator()(char *buffer) const { TQ_free(buffer); }
    };
    const OpenStore::Number number = m_fields->store;
    OpenStore *const store = number != 0 ? OpenStore::find(number) : OpenStore::find(host, port);
    const auto bytes = store ? readProfile(*store, dbkey, name) : std::nullopt;
    unsigned length = 0;
    const std::unique_ptr<char, Free> old(bytes ? toPacket(length) : nullptr);
    if (old) {
        std::string text = withField({ old.get(), length }, bytes->tag, bytes->value);
        fromPacket(text.data(), static_cast<unsigned>(text.size()), false, true);
    }
}

TQPacketable *PacketableUtil::getPacketable(PACKETDATATYPES type)
{
    if (type == PACKETDATATYPE_BOOK) {
        return new BOOK_CC;
    }
    if (type == PACKETDATATYPE_JOB) {
        return new TQJOB_CC;
    }
    if (type == PACKETDATATYPE_ICCPROFILE) {
        return new ICCPROFILEDATA_CC;
    }
    const bool known = type == PACKETDATATYPE_UNCONVERTED || storageClass(type);
    return known ? new TQPacketable(type) : nullptr;
}
