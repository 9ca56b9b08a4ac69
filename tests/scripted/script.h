#ifndef SCRIPT_H
#define SCRIPT_H

#include "archivenode.h"
#include "tqrecords.h"
#include "tqstorageclass.h"

#include <functional>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <vector>

/// One record of a scripted list.
struct ScriptRecord
{
    TQKEY_ELEMENT key;
    std::string name;
    int page = 0;
    std::string publication = {};  ///< empty for a job outside any publication
    unsigned int publicationId = 0;
};

/// A record that was handed out; its declared part comes first.
struct Record
{
    union {
        TQLISTRECORD list;
        TQOWNER owner;
        TQJOB job;  // has its name where a book has it
    };
    ScriptRecord data;
    PACKETDATATYPES type;
    bool isTrimmed = false;

    static Record *of(const void *shown)
    {
        return static_cast<Record *>(const_cast<void *>(shown));
    }
};

/// What the scripted server library answers, what it was asked, and what became of its answers.
struct Script
{
    using Records = std::vector<ScriptRecord>;
    using Table = std::vector<CONVERTSTRUCTELEMENTINFO>;

    std::map<unsigned int, Records> owners;  ///< by data type
    std::map<unsigned int, Records> books;  ///< by the key word of their owner
    std::map<int, Records> jobs;  ///< by the id of their owner, 1000 and its key word
    /// By data type, without the record that ends them. An item refers by the name in a field 2,
    /// and by the key in a field 3 or 5.
    std::map<unsigned int, Table> tables;

    /// Calls that fail, and how: "getBooks null" (nothing, or false), "getBooks error" (records,
    /// but the command failed), "getBooks null name" (the first record's), "getBooks cycle N" (the
    /// last record is followed by that one), "loadRecord null" (no subrecord, for outputs),
    /// "toPacket empty".
    std::set<std::string> faults;

    /// False: ArchiveNode::add() takes no ownership, so that a node may be below several others,
    /// and below itself.
    bool ownsNodes = true;

    /// Name and arguments of each query and of most other calls, in order.
    std::vector<std::string> calls;
    bool isRecording = true;

    /// Runs inside of each call that is recorded: what an event loop might do there.
    std::function<void()> onCall;

    /// What was handed out and not yet given back, and what was given back wrongly: twice, as
    /// another type, or never handed out.
    std::set<const void *> records;
    std::set<const void *> buffers;
    std::set<const void *> items;
    int wrongFrees = 0;
    int untrimmedJobs = 0;  ///< that an item took over before TQJOB_CC::trimLists()

    bool isFaulty(const char *call, const std::string &how = "null") const
    {
        return !faults.empty() && faults.count(call + (' ' + how)) > 0;
    }
    template<typename... Arguments>
    void record(const char *call, const Arguments &...arguments)
    {
        if (isRecording) {
            std::ostringstream text;
            text << call;
            ((text << ' ' << arguments), ...);
            calls.push_back(text.str());
            if (onCall) {
                onCall();
            }
        }
    }
};

/// The one script. Assign a new one to start again.
Script &script();

#endif
