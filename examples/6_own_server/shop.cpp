// The store: tables of lines, whose columns are separated by tabs.

#include "shop.h"

#include <algorithm>
#include <fstream>
#include <iterator>
#include <sstream>

namespace {

const char *fileOf(PACKETDATATYPES type)
{
    switch (type) {
    case PACKETDATATYPE_OUTPUT:
        return "outputs.tsv";
    case PACKETDATATYPE_JOB:
        return "jobs.tsv";
    case PACKETDATATYPE_ICCPROFILE:
        return "profiles.tsv";
    case PACKETDATATYPE_BOOKOWNER:
        return "owners.tsv";
    default:
        return "books.tsv";
    }
}

Row readRow(const std::string &line, PACKETDATATYPES type)
{
    Row row = {};
    std::istringstream columns(line);
    columns >> row.key.key >> row.owner >> std::ws;
    row.key.hkey = type;
    std::getline(columns, row.name, '\t');
    for (std::string value; std::getline(columns, value, '\t');) {
        row.values.push_back(value);
    }
    return row;
}

}  // namespace

std::optional<std::vector<Row>> Shop::rows(PACKETDATATYPES type)
{
    const std::string path = folder + '/' + fileOf(type);
    std::ifstream file(path);
    std::vector<Row> rows;
    for (std::string line; std::getline(file, line);) {
        rows.push_back(readRow(line, type));
    }
    if (!file.eof()) {  // also when it could not be opened
        fail(path + ": cannot be read");
        return {};
    }
    std::sort(rows.begin(), rows.end(), [](const Row &a, const Row &b) { return a.name < b.name; });
    return rows;
}

std::optional<std::string> Shop::bytes(const std::string &file)
{
    std::ifstream stream(folder + '/' + file, std::ios::binary);
    std::string bytes(std::istreambuf_iterator<char>(stream), {});
    if (!stream.is_open() || stream.bad()) {
        fail(file + ": cannot be read");
        return {};
    }
    return bytes;
}

void Shop::fail(const std::string &reason)
{
    ++failures;
    error = reason;
}
