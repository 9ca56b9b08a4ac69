// usage: tqxml_rows pugixml|stream STORE
//
// The floor of "tqxml list jobs --include-publications --format xml": reads the rows of a store in
// SQLite and writes the same packet, with pugixml or with QXmlStreamWriter.

#include <QFile>
#include <QString>
#include <QXmlStreamWriter>

#include <pugixml.hpp>
#include <sqlite3.h>

#include <cstdio>
#include <cstring>
#include <iterator>
#include <string>

namespace {

// A word of the packet, for either writer.
struct Name
{
    const char *bytes;
    QString text = QString::fromLatin1(bytes);
};

class PugiWriter
{
public:
    void open(const Name &name) { m_node = m_node.append_child(name.bytes); }
    void attribute(const Name &name, const char *value)
    {
        m_node.append_attribute(name.bytes).set_value(value);
    }
    void text(const char *value) { m_node.append_child(pugi::node_pcdata).set_value(value); }
    void close() { m_node = m_node.parent(); }
    void finish()
    {
        pugi::xml_writer_file out(stdout);
        m_document.save(out, " ", pugi::format_default | pugi::format_no_declaration);
    }

private:
    pugi::xml_document m_document;
    pugi::xml_node m_node = m_document;
};

class StreamWriter
{
public:
    StreamWriter() { m_file.open(stdout, QIODevice::WriteOnly); }
    void open(const Name &name) { m_writer.writeStartElement(name.text); }
    void attribute(const Name &name, const char *value)
    {
        m_writer.writeAttribute(name.text, QString::fromUtf8(value));
    }
    void text(const char *value) { m_writer.writeCharacters(QString::fromUtf8(value)); }
    void close() { m_writer.writeEndElement(); }
    void finish() { m_file.close(); }

private:
    QFile m_file;
    QXmlStreamWriter m_writer { &m_file };
};

const char QUERY[] =
    "SELECT j.id, j.name, o.name, j.book_id, j.profile_id, p.name, j.page, j.state, j.priority,"
    " j.copies, j.trim_box, j.bleed, j.colours, j.coverage, j.options, j.created, j.remark,"
    " j.proof_profile FROM tq_job j JOIN tq_output o ON o.id = j.output_id"
    " LEFT JOIN tq_publication p ON p.id = j.publication_id"
    " WHERE j.output_id = ? ORDER BY j.name, j.id";

// What the columns from the second on become.
struct Field
{
    Name name;
    const char *hkey = nullptr;  // of a key
    char separator = 0;  // of a list
};

template<typename Writer>
class Listing
{
public:
    explicit Listing(const char *store)
    {
        sqlite3_open_v2(store, &m_store, SQLITE_OPEN_READONLY, nullptr);
        sqlite3_prepare_v2(m_store, QUERY, -1, &m_jobs, nullptr);
    }
    ~Listing()
    {
        sqlite3_finalize(m_jobs);
        sqlite3_close(m_store);
    }
    Listing(const Listing &) = delete;
    Listing &operator=(const Listing &) = delete;

    void write()
    {
        m_out.open({ "tqxml" });
        m_out.attribute({ "xmlns" }, "urn:tqxml:packet:1");
        m_out.open({ "header" });
        writeAgent({ "src" }, "-1");
        writeAgent({ "dst" }, "1");
        m_out.close();
        m_out.open({ "body" });
        sqlite3_stmt *outputs = nullptr;
        sqlite3_prepare_v2(
            m_store, "SELECT id FROM tq_output ORDER BY name", -1, &outputs, nullptr);
        while (sqlite3_step(outputs) == SQLITE_ROW) {
            writeJobs(sqlite3_column_int(outputs, 0));
        }
        sqlite3_finalize(outputs);
        m_out.close();
        m_out.close();
        m_out.finish();
    }

private:
    void writeAgent(const Name &name, const char *id)
    {
        m_out.open(name);
        m_out.attribute({ "agent_id" }, id);
        m_out.close();
    }

    void writeJobs(int output)
    {
        sqlite3_bind_int(m_jobs, 1, output);
        while (sqlite3_step(m_jobs) == SQLITE_ROW) {
            writeJob();
        }
        sqlite3_reset(m_jobs);
    }

    const char *column(int index)
    {
        return reinterpret_cast<const char *>(sqlite3_column_text(m_jobs, index));
    }

    void writeJob()
    {
        m_out.open(m_packetable);
        m_out.attribute(m_datatype, "15");
        m_out.attribute(m_hkey, "15");
        writeHex(m_key, sqlite3_column_int(m_jobs, 0));
        m_out.attribute(m_name, column(1));
        m_out.open(m_item);
        m_out.attribute(m_datatype, "15");
        for (size_t i = 0; i < std::size(m_fields); ++i) {
            if (const char *value = column(int(i) + 1)) {
                writeField(m_fields[i], int(i) + 1, value);
            }
        }
        m_out.close();
        m_out.close();
    }

    void writeField(const Field &field, int index, const char *value)
    {
        m_out.open(field.name);
        if (field.hkey) {
            m_out.attribute(m_hkey, field.hkey);
            writeHex(m_key, sqlite3_column_int(m_jobs, index));
        } else if (field.separator) {
            writeList(value, field.separator);
        } else {
            m_out.attribute(m_value, value);
        }
        m_out.close();
    }

    void writeHex(const Name &name, int number)
    {
        char text[16];
        std::snprintf(text, sizeof(text), "%x", unsigned(number));
        m_out.attribute(name, text);
    }

    void writeList(const char *list, char separator)
    {
        int size = 1;
        for (const char *at = std::strchr(list, separator); at;
             at = std::strchr(at + 1, separator)) {
            ++size;
        }
        writeHex(m_size, size);
        std::string value;
        for (const char *at = list; at;) {
            const char *end = std::strchr(at, separator);
            value.assign(at, end ? size_t(end - at) : std::strlen(at));
            m_out.open(m_value);
            m_out.text(value.c_str());
            m_out.close();
            at = end ? end + 1 : nullptr;
        }
    }

    const Name m_packetable { "packetable" }, m_item { "item" }, m_datatype { "datatype" },
        m_hkey { "hkey" }, m_key { "key" }, m_name { "name" }, m_value { "value" },
        m_size { "size" };
    const Field m_fields[17] = { { { "_1" } }, { { "_2" } }, { { "_3" }, "56" }, { { "_4" }, "30" },
        { { "_5" } }, { { "_6" } }, { { "_7" } }, { { "_8" } }, { { "_9" } },
        { { "_a" }, nullptr, ' ' }, { { "_b" } }, { { "_c" }, nullptr, '\n' },
        { { "_d" }, nullptr, ' ' }, { { "_e" } }, { { "_f" } }, { { "_10" } }, { { "_11" } } };
    sqlite3 *m_store = nullptr;
    sqlite3_stmt *m_jobs = nullptr;
    Writer m_out;
};

}  // namespace

int main(int argc, char *argv[])
{
    if (argc != 3) {
        return 2;
    }
    if (std::strcmp(argv[1], "pugixml") == 0) {
        Listing<PugiWriter>(argv[2]).write();
    } else {
        Listing<StreamWriter>(argv[2]).write();
    }
    return 0;
}
