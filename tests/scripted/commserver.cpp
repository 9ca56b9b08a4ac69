#include "tqcommserver.h"

#include "records_p.h"

namespace {

std::string text(long long number) { return ' ' + std::to_string(number); }

std::string text(const TQKEY_ELEMENT &key)
{
    return text(key.key) + ':' + std::to_string(key.hkey);
}

// Answers a query; the command fails when the call is to fail so.
template<typename Key>
TQLISTRECORD *query(TQLPCOMMANDS &command, const std::string &call, PACKETDATATYPES family,
    const std::map<Key, Script::Records> &lists, Key key)
{
    command.status = script().isFaulty(call, "error") ? 1 : 0;
    const auto list = lists.find(key);
    return list == lists.end() ? nullptr : Record::makeList(call, family, list->second);
}

}  // namespace

Script &script()
{
    static Script current;
    return current;
}

TQCommServer::TQCommServer(const char *) : m_connection(nullptr) {}

TQCommServer::~TQCommServer() = default;

TQLISTRECORD *TQCommServer::getDBList(TQLPCOMMANDS &command, ZQ_MESSAGE_ID &, PACKETDATATYPES type)
{
    script().record("getDBList" + text(type));
    return query(
        command, "getDBList", PACKETDATATYPE_OUTPUT, script().owners, static_cast<unsigned>(type));
}

TQJOB *TQCommServer::getJobqueue(TQLPCOMMANDS &command, ZQ_MESSAGE_ID &, TQQUEUE queue,
    SORTTYPE sortType, SORTORDER sortOrder, int owner)
{
    script().record("getJobqueue" + text(queue) + text(sortType) + text(sortOrder) + text(owner));
    return reinterpret_cast<TQJOB *>(
        query(command, "getJobqueue", PACKETDATATYPE_JOB, script().jobs, owner));
}

TQBOOK *TQCommServer::getBooks(TQLPCOMMANDS &command, ZQ_MESSAGE_ID &, SORTTYPE sortType,
    SORTORDER sortOrder, const TQKEY_ELEMENT &owner)
{
    script().record("getBooks" + text(sortType) + text(sortOrder) + text(owner));
    return reinterpret_cast<TQBOOK *>(
        query(command, "getBooks", PACKETDATATYPE_BOOK, script().books, owner.key));
}

int TQCommServer::getidfromtqkey(const TQKEY_ELEMENT &key)
{
    script().record("getidfromtqkey" + text(key));
    return script().isFaulty("getidfromtqkey") ? 0 : 1000 + static_cast<int>(key.key);
}

bool TQCommServer::iserror(TQLPCOMMANDS &command)
{
    script().record("iserror");
    return command.status != 0;
}

const char *TQCommServer::getConnectedHostname() const
{
    return script().isFaulty("getConnectedHostname") ? nullptr : script().host.c_str();
}

int TQCommServer::getConnectedPortnum() const { return script().port; }

ArchiveNode *TQCommServer::getArchiveNode(
    TQLPCOMMANDS &, ZQ_MESSAGE_ID &, PACKETDATATYPES type, const TQKEY_ELEMENT &key)
{
    script().record("getArchiveNode" + text(type) + text(key));
    return nullptr;  // tests make their own
}

const char *TQCommServer::errorText() const { return ""; }
