#include "fieldtable_p.h"

#include "xmlpacketable.h"

#include <algorithm>
#include <unordered_map>

namespace {

// Items of this type are never converted.
constexpr unsigned int UNCONVERTED = PACKETDATATYPE_UNCONVERTED;

// Tables that are remembered; far more than there are data types.
constexpr size_t MAX_TABLES = 1024;

// XML shape of a field by element type code. Codes outside every span have none. The width of a
// field tells codes apart that have the same shape, so it is not looked at.
struct Span
{
    unsigned int first;
    unsigned int last;
    Shape shape;
};
constexpr Span SPANS[] = {
    { 1, 9, Simple },
    { 11, 13, Simple },
    { 14, 14, Key },
    { 15, 19, NumberArray },
    { 20, 21, Simple },
    { 22, 22, StringArray },
    { 23, 23, Binary },
    { 24, 25, Simple },
    { 27, 27, NumberArray },
    { 28, 29, Simple },
    { 30, 31, NumberArray },
};

Shape shapeOf(unsigned int type)
{
    for (const Span &span : SPANS) {
        if (type >= span.first && type <= span.last) {
            return span.shape;
        }
    }
    return NoShape;
}

bool isBefore(const FieldTable::Field &field, unsigned int tag) { return field.tag < tag; }

}  // namespace

FieldTable::FieldTable(const CONVERTSTRUCTELEMENTINFO *records)
{
    const CONVERTSTRUCTELEMENTINFO *end = records;
    for (; end->type != 0; ++end) {
        m_fields.push_back({ end->tag, end->type, shapeOf(end->type),
            XMLPacketable::getXMLTagNameFromDATATAG(int(end->tag)) });
    }
    m_records.assign(records, end + 1);
    std::stable_sort(m_fields.begin(), m_fields.end(),
        [](const Field &a, const Field &b) { return a.tag < b.tag; });
}

bool FieldTable::isMadeFrom(const CONVERTSTRUCTELEMENTINFO *records) const
{
    // Ends at the first difference, so a table that has become shorter is not read past its end.
    return std::all_of(m_records.begin(), m_records.end(), [&](const auto &known) {
        const CONVERTSTRUCTELEMENTINFO &record = *records++;
        return record.type == known.type && (record.type == 0 || record.tag == known.tag);
    });
}

std::shared_ptr<const FieldTable> FieldTable::of(unsigned int datatype)
{
    const CONVERTSTRUCTELEMENTINFO *records =
        datatype == UNCONVERTED ? nullptr : TQGetSystemStorageClassConv(PACKETDATATYPES(datatype));
    if (!records) {
        return nullptr;
    }
    thread_local std::unordered_map<const void *, std::shared_ptr<const FieldTable>> tables;
    if (tables.size() > MAX_TABLES) {
        tables.clear();
    }
    std::shared_ptr<const FieldTable> &table = tables[records];
    if (!table || !table->isMadeFrom(records)) {
        table.reset(new FieldTable(records));
    }
    return table;
}

const FieldTable::Field *FieldTable::find(unsigned int tag) const
{
    // Tags mostly count up from the first.
    const size_t guess = m_fields.empty() ? 0 : tag - m_fields.front().tag;
    if (guess < m_fields.size() && m_fields[guess].tag == tag &&
        (guess == 0 || m_fields[guess - 1].tag != tag)) {
        return &m_fields[guess];
    }
    const auto field = std::lower_bound(m_fields.begin(), m_fields.end(), tag, isBefore);
    return field != m_fields.end() && field->tag == tag ? &*field : nullptr;
}
