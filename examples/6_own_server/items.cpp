// A server library of one's own: items, all with one field, 1, their title.

#include <cstdlib>
#include <cstring>
#include <string>
#include <tqitems.h>
#include <tqstorageclass.h>

struct TQPacketable::Fields
{
    std::string title;
};

TQPacketable::TQPacketable(PACKETDATATYPES type)
    : subrecord(nullptr), datatype(type), dbkey(), name(nullptr), m_fields(new Fields)
{
}
TQPacketable::~TQPacketable()
{
    std::free(name);
    delete m_fields;
}
TQPacketable &TQPacketable::operator=(const TQPacketable &other)
{
    datatype = other.datatype;  // a book has no sub-record
    dbkey = other.dbkey;
    *m_fields = *other.m_fields;
    setName(other.name);
    return *this;
}
void TQPacketable::getReferences(int, TQDB_REFERENCE **head, int) { *head = nullptr; }

char *TQPacketable::toPacket(unsigned int &length) const
{
    const std::string text = "SI 56\n1 " + m_fields->title + "\nTI 0\n";
    length = static_cast<unsigned int>(text.size());
    return static_cast<char *>(std::memcpy(std::malloc(length), text.data(), length));
}
bool TQPacketable::fromPacket(char *data, unsigned int length, bool, bool)
{
    const std::string text(data, length);
    const size_t start = text.find("\n1 ");
    if (start == std::string::npos) {
        return false;
    }
    m_fields->title = text.substr(start + 3, text.find('\n', start + 3) - start - 3);
    return true;
}

void TQPacketable::loadRecord(unsigned char *record)
{
    setName(reinterpret_cast<TQBOOK *>(record)->name);
    setData(record);
}
void TQPacketable::setData(unsigned char *record)
{
    m_fields->title = reinterpret_cast<TQBOOK *>(record)->name;
    TQPacketFreeItem(reinterpret_cast<TQLISTRECORD *>(record), datatype);  // it is the item's
}
