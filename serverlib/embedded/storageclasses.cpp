// Storage classes: the tables of the data types that come with the library, and the types that
// applications register. A field's column names the table by an alias, which the type's source
// defines. A data type that is to be stored needs a table of fields, a row in BUILTINS and a row in
// SOURCES. Programs that show headings translate them in the context "Field".

#include "storageclass_p.h"

#include <QCoreApplication>

#include <algorithm>
#include <iterator>
#include <map>
#include <memory>
#include <mutex>
#include <shared_mutex>

namespace TQServerInternal {

namespace {

constexpr PACKETDATATYPES NONE = PACKETDATATYPE_NONE;

constexpr TQSTORAGEFIELD OUTPUT_FIELDS[] = {
    { TQELEMENT_TEXT, 0x1, 1, "o.name", QT_TRANSLATE_NOOP("Field", "Name"), NONE },
    { TQELEMENT_WORD, 0x2, 1, "o.technology", QT_TRANSLATE_NOOP("Field", "Technology"), NONE },
    { TQELEMENT_INTEGER4, 0x3, 4, "o.resolution", QT_TRANSLATE_NOOP("Field", "Resolution (dpi)"),
        NONE },
    { TQELEMENT_LENGTH, 0x4, 8, "o.width", QT_TRANSLATE_NOOP("Field", "Width (pt)"), NONE },
    { TQELEMENT_LENGTH, 0x5, 8, "o.height", QT_TRANSLATE_NOOP("Field", "Height (pt)"), NONE },
    { TQELEMENT_TEXTS, 0x6, 1, "o.colours", QT_TRANSLATE_NOOP("Field", "Colours"), NONE },
    { TQELEMENT_INTEGERS, 0x7, 2, "o.rulings", QT_TRANSLATE_NOOP("Field", "Rulings (lpi)"), NONE },
    { TQELEMENT_REMARK, 0x8, 1, "o.location", QT_TRANSLATE_NOOP("Field", "Location"), NONE },
    { TQELEMENT_DATE, 0x9, 1, "o.installed", QT_TRANSLATE_NOOP("Field", "Installed"), NONE },
};

constexpr TQSTORAGEFIELD JOB_FIELDS[] = {
    { TQELEMENT_TEXT, 0x1, 1, "j.name", QT_TRANSLATE_NOOP("Field", "Name"), NONE },
    { TQELEMENT_NAME, 0x2, 1, "o.name", QT_TRANSLATE_NOOP("Field", "Output"),
        PACKETDATATYPE_OUTPUT },
    { TQELEMENT_KEY, 0x3, 4, "j.book_id", QT_TRANSLATE_NOOP("Field", "Book"), PACKETDATATYPE_BOOK },
    { TQELEMENT_KEY, 0x4, 4, "j.profile_id", QT_TRANSLATE_NOOP("Field", "ICC profile"),
        PACKETDATATYPE_ICCPROFILE },
    { TQELEMENT_TEXT, 0x5, 1, "p.name", QT_TRANSLATE_NOOP("Field", "Publication"), NONE },
    { TQELEMENT_INTEGER, 0x6, 2, "j.page", QT_TRANSLATE_NOOP("Field", "Page"), NONE },
    { TQELEMENT_CHOICE, 0x7, 4, "j.state", QT_TRANSLATE_NOOP("Field", "State"), NONE },
    { TQELEMENT_INTEGER1, 0x8, 1, "j.priority", QT_TRANSLATE_NOOP("Field", "Priority"), NONE },
    { TQELEMENT_INTEGER, 0x9, 4, "j.copies", QT_TRANSLATE_NOOP("Field", "Copies"), NONE },
    { TQELEMENT_LENGTHS, 0xa, 8, "j.trim_box", QT_TRANSLATE_NOOP("Field", "Trim box (pt)"), NONE },
    { TQELEMENT_NUMBER, 0xb, 8, "j.bleed", QT_TRANSLATE_NOOP("Field", "Bleed (mm)"), NONE },
    { TQELEMENT_TEXTS, 0xc, 1, "j.colours", QT_TRANSLATE_NOOP("Field", "Colours"), NONE },
    { TQELEMENT_INTEGERS2, 0xd, 2, "j.coverage", QT_TRANSLATE_NOOP("Field", "Coverage (%)"), NONE },
    { TQELEMENT_BITS, 0xe, 4, "j.options", QT_TRANSLATE_NOOP("Field", "Options"), NONE },
    { TQELEMENT_DATETIME, 0xf, 1, "j.created", QT_TRANSLATE_NOOP("Field", "Created"), NONE },
    { TQELEMENT_REMARK, 0x10, 1, "j.remark", QT_TRANSLATE_NOOP("Field", "Remark"), NONE },
    { TQELEMENT_NAME, 0x11, 1, "j.proof_profile", QT_TRANSLATE_NOOP("Field", "Proofing profile"),
        PACKETDATATYPE_ICCPROFILE },
};

constexpr TQSTORAGEFIELD ICCPROFILE_FIELDS[] = {
    { TQELEMENT_TEXT, 0x1, 1, "c.name", QT_TRANSLATE_NOOP("Field", "Name"), NONE },
    { TQELEMENT_PATH, 0x2, 1, "c.file", QT_TRANSLATE_NOOP("Field", "File"), NONE },
    { TQELEMENT_WORD, 0x3, 1, "c.device_class", QT_TRANSLATE_NOOP("Field", "Device class"), NONE },
    { TQELEMENT_WORD, 0x4, 1, "c.colour_space", QT_TRANSLATE_NOOP("Field", "Colour space"), NONE },
    { TQELEMENT_TOKEN, 0x5, 1, "c.version", QT_TRANSLATE_NOOP("Field", "Version"), NONE },
    { TQELEMENT_INTEGER4, 0x6, 4, "c.size", QT_TRANSLATE_NOOP("Field", "Size (bytes)"), NONE },
    { TQELEMENT_BYTES, 0x7, 1, "c.data", QT_TRANSLATE_NOOP("Field", "Data"), NONE },
};

constexpr TQSTORAGEFIELD BOOKOWNER_FIELDS[] = {
    { TQELEMENT_TEXT, 0x1, 1, "w.name", QT_TRANSLATE_NOOP("Field", "Name"), NONE },
    { TQELEMENT_TEXT, 0x2, 1, "w.city", QT_TRANSLATE_NOOP("Field", "City"), NONE },
    { TQELEMENT_TEXT, 0x3, 1, "w.country", QT_TRANSLATE_NOOP("Field", "Country"), NONE },
    { TQELEMENT_INTEGER2, 0x4, 2, "w.founded", QT_TRANSLATE_NOOP("Field", "Founded"), NONE },
};

constexpr TQSTORAGEFIELD BOOK_FIELDS[] = {
    { TQELEMENT_TEXT, 0x1, 1, "b.name", QT_TRANSLATE_NOOP("Field", "Title"), NONE },
    { TQELEMENT_TEXT, 0x2, 1, "b.author", QT_TRANSLATE_NOOP("Field", "Author"), NONE },
    { TQELEMENT_KEY, 0x3, 4, "b.owner_id", QT_TRANSLATE_NOOP("Field", "Owner"),
        PACKETDATATYPE_BOOKOWNER },
    { TQELEMENT_INTEGER, 0x4, 2, "b.pages", QT_TRANSLATE_NOOP("Field", "Pages"), NONE },
    { TQELEMENT_INTEGER2, 0x5, 2, "b.year", QT_TRANSLATE_NOOP("Field", "First published"), NONE },
    { TQELEMENT_TOKEN, 0x6, 1, "b.language", QT_TRANSLATE_NOOP("Field", "Language"), NONE },
    { TQELEMENT_NUMBERS, 0x7, 8, "b.page_size", QT_TRANSLATE_NOOP("Field", "Page size (mm)"),
        NONE },
    { TQELEMENT_TEXTS, 0x8, 1, "b.subjects", QT_TRANSLATE_NOOP("Field", "Subjects"), NONE },
};

struct Builtin
{
    PACKETDATATYPES type;
    const TQSTORAGEFIELD *fields;
    size_t count;
};

// An entry of the outputs list has the fields of its output.
constexpr Builtin BUILTINS[] = {
    { PACKETDATATYPE_OUTPUT, OUTPUT_FIELDS, std::size(OUTPUT_FIELDS) },
    { PACKETDATATYPE_OUTPUTLIST, OUTPUT_FIELDS, std::size(OUTPUT_FIELDS) },
    { PACKETDATATYPE_JOB, JOB_FIELDS, std::size(JOB_FIELDS) },
    { PACKETDATATYPE_ICCPROFILE, ICCPROFILE_FIELDS, std::size(ICCPROFILE_FIELDS) },
    { PACKETDATATYPE_BOOKOWNER, BOOKOWNER_FIELDS, std::size(BOOKOWNER_FIELDS) },
    { PACKETDATATYPE_BOOK, BOOK_FIELDS, std::size(BOOK_FIELDS) },
};

constexpr StorageClass::Source SOURCES[] = {
    { PACKETDATATYPE_OUTPUT, "o", "NULL, NULL, NULL", "tq_output o" },
    { PACKETDATATYPE_JOB, "j", "p.name, p.id, j.page",
        "tq_job j JOIN tq_output o ON o.id = j.output_id "
        "LEFT JOIN tq_publication p ON p.id = j.publication_id" },
    { PACKETDATATYPE_ICCPROFILE, "c", "NULL, NULL, NULL", "tq_icc_profile c" },
    { PACKETDATATYPE_BOOKOWNER, "w", "NULL, NULL, NULL", "tq_book_owner w" },
    { PACKETDATATYPE_BOOK, "b", "NULL, NULL, NULL", "tq_book b" },
};
static_assert(
    std::size(SOURCES) == std::size(BUILTINS) - 1, "every type is stored, but the outputs list");

const StorageClass::Source *sourceOf(PACKETDATATYPES type)
{
    const auto found = std::find_if(std::begin(SOURCES), std::end(SOURCES),
        [type](const StorageClass::Source &source) { return source.type == type; });
    return found == std::end(SOURCES) ? nullptr : found;
}

std::vector<TQSTORAGEFIELD> specimenFields()
{
    std::vector<TQSTORAGEFIELD> fields;
    for (unsigned code = 1; code <= 31; ++code) {
        for (const unsigned width : { 1U, 2U, 4U, 8U }) {
            fields.push_back({ code, 256 * code + width, width, nullptr, nullptr, NONE });
        }
    }
    return fields;
}

using Classes = std::map<unsigned, std::unique_ptr<StorageClass>>;

Classes builtinClasses()
{
    Classes classes;
    for (const Builtin &builtin : BUILTINS) {
        classes[builtin.type] =
            std::make_unique<StorageClass>(builtin.type, builtin.fields, builtin.count);
    }
    const std::vector<TQSTORAGEFIELD> specimen = specimenFields();
    classes[PACKETDATATYPE_SPECIMEN] =
        std::make_unique<StorageClass>(PACKETDATATYPE_SPECIMEN, specimen.data(), specimen.size());
    return classes;
}

// These never change, so they need no lock.
const Classes &builtins()
{
    static const Classes known = builtinClasses();
    return known;
}

// What applications have registered; any thread may do so at any time.
struct Registered
{
    std::shared_mutex mutex;
    Classes classes;
};

Registered &registered()
{
    static Registered known;
    return known;
}

StorageClass *findIn(const Classes &classes, PACKETDATATYPES type)
{
    const auto found = classes.find(type);
    return found == classes.end() ? nullptr : found->second.get();
}

StorageClass *lookUp(PACKETDATATYPES type)
{
    StorageClass *const builtin = findIn(builtins(), type);
    if (builtin) {
        return builtin;
    }
    const std::shared_lock lock(registered().mutex);
    return findIn(registered().classes, type);
}

bool isUsable(const TQSTORAGEFIELD *fields, size_t count)
{
    std::vector<unsigned> tags;
    for (size_t i = 0; i < count; ++i) {
        if (fields[i].type == 0 || fields[i].tag >= 0x80000000U) {
            return false;
        }
        tags.push_back(fields[i].tag);
    }
    std::sort(tags.begin(), tags.end());
    return std::adjacent_find(tags.begin(), tags.end()) == tags.end();
}

}  // namespace

StorageClass::StorageClass(PACKETDATATYPES type, const TQSTORAGEFIELD *fields, size_t count)
    : m_type(type), m_source(sourceOf(type))
{
    for (size_t i = 0; i < count; ++i) {
        TQSTORAGEFIELD field = fields[i];
        field.column = keep(field.column);
        field.heading = keep(field.heading);
        m_byTag.emplace_back(field.tag, i);
        m_fields.push_back(field);
        m_conversion.push_back({ field.type, field.tag, 0, field.width, {} });
    }
    m_conversion.push_back({});
    std::sort(m_byTag.begin(), m_byTag.end());
}

const TQSTORAGEFIELD *StorageClass::find(unsigned tag) const
{
    const auto found =
        std::lower_bound(m_byTag.begin(), m_byTag.end(), std::make_pair(tag, size_t(0)));
    return found == m_byTag.end() || found->first != tag ? nullptr : &m_fields[found->second];
}

const char *StorageClass::keep(const char *text)
{
    return text ? m_texts.emplace_back(text).c_str() : nullptr;
}

const StorageClass *storageClass(PACKETDATATYPES type) { return lookUp(type); }

}  // namespace TQServerInternal

using namespace TQServerInternal;

CONVERTSTRUCTELEMENTINFO *TQGetSystemStorageClassConv(PACKETDATATYPES type)
{
    StorageClass *known = lookUp(type);
    return known ? known->conversion() : nullptr;
}

bool TQRegisterStorageClass(PACKETDATATYPES type, const TQSTORAGEFIELD *fields, size_t count)
{
    if (type == PACKETDATATYPE_NONE || type == PACKETDATATYPE_UNCONVERTED ||
        findIn(builtins(), type) || (count > 0 && !fields) || !isUsable(fields, count)) {
        return false;
    }
    auto added = std::make_unique<StorageClass>(type, fields, count);
    const std::unique_lock lock(registered().mutex);
    return registered().classes.emplace(type, std::move(added)).second;
}

bool TQUnregisterStorageClass(PACKETDATATYPES type)
{
    const std::unique_lock lock(registered().mutex);
    return registered().classes.erase(type) > 0;
}

const char *TQFieldHeading(PACKETDATATYPES type, unsigned int tag)
{
    const StorageClass *known = storageClass(type);
    const TQSTORAGEFIELD *field = known ? known->find(tag) : nullptr;
    return field ? field->heading : nullptr;
}
