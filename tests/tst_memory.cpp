// Memory runs out at one allocation of the library after the other: what it had made until then is
// freed, and a router goes on afterwards. Only the library's own calls of operator new fail. QtXml,
// and QtCore where it connects signals, leak or crash on their own when one of theirs does.

#include "script.h"
#include "tqcommserver.h"
#include "util.h"
#include "xmlaction.h"
#include "xmlpacketable.h"
#include "xmlrouter.h"
#include "xpkreference.h"

#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>

#include <dlfcn.h>

namespace {

size_t callsUntilFailure = 0;  // 0 for never
size_t liveBlocks = 0;

void *allocate(size_t size, const void *caller)
{
    Dl_info info;
    const bool isCounted =
        callsUntilFailure > 0 && dladdr(caller, &info) != 0 && strstr(info.dli_fname, "/libtqxml");
    const bool fails = isCounted && --callsUntilFailure == 0;
    void *const block = fails ? nullptr : std::malloc(size + 1);
    liveBlocks += block ? 1 : 0;
    return block;
}

template<typename Use>
void attempt(Use use)
{
    try {
        use();
    } catch (const std::bad_alloc &) {
    }
}

}  // namespace

void *operator new(size_t size)
{
    if (void *block = allocate(size, __builtin_return_address(0))) {
        return block;
    }
    throw std::bad_alloc();
}
void *operator new(size_t size, const std::nothrow_t &) noexcept
{
    return allocate(size, __builtin_return_address(0));
}
void operator delete(void *block) noexcept
{
    liveBlocks -= block ? 1 : 0;
    std::free(block);
}
void operator delete(void *block, size_t) noexcept { operator delete(block); }

class tst_Memory : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void aConversionFreesWhatItMade() { everythingIsFreed(convert); }
    void aListingFreesWhatItMade() { everythingIsFreed(list); }
    void aRouterGoesOnAfterAReceiverWithoutMemory();

private:
    static void convert();
    static void list();
    static void everythingIsFreed(void (*scenario)());
};

void tst_Memory::init()
{
    const Script::Table table = { { TQELEMENT_TEXT, 1, 0, 1, {} }, { TQELEMENT_KEY, 3, 0, 4, {} } };
    script() = Script();
    script().isRecording = false;
    script().tables = { { 8, table }, { 21, table } };
    script().owners = { { 15, { { { 1, 8 }, "output" } } } };
    script().jobs[1001] = { { { 1, 21 }, "one" }, { { 2, 21 }, "two" } };
}

// An item that refers to another, to XML with that one inlined and back.
void tst_Memory::convert()
{
    const auto item = [](unsigned key) {
        QByteArray text("SI 8\n1 text\n3 2 9\nTI 0\n");
        TQPacketable *made = PacketableUtil::getPacketable(PACKETDATATYPE_OUTPUT);
        made->fromPacket(text.data(), unsigned(text.size()), false, true);
        made->dbkey = { key, 9 };
        return made;
    };
    TQCommServer server("");
    ArchiveNode root(item(1));
    root.add(new ArchiveNode(item(2)));
    QList<XPKReference *> references;
    attempt([&] {
        const std::unique_ptr<XMLPacketable> xml(XMLPacketable::fromArchiveNode(server, &root));
        xml->getXPKReferences(references);
        const std::unique_ptr<TQPacketable> back(xml->getData());
    });
    qDeleteAll(references);
}

// A request for jobs, from sending to the reply.
void tst_Memory::list()
{
    QStringList log;
    TQCommServer server("");
    RecordingAgent agent(1, &log);
    XMLRouter router(&server, nullptr, "hub");
    router.add(&agent);
    XMLAction request(str("list"), 1003, agent.getAgentID());
    std::unique_ptr<XMLPacket> packet(agent.getXMLPacket(router.getXMLCommServerID()));
    packet->append(request);
    attempt([&] {
        router.send(packet.get());
        (void)packet.release();  // what fails leaves it to the caller
        router.send();
    });
    router.send();  // goes on where it stopped
}

void tst_Memory::everythingIsFreed(void (*scenario)())
{
    scenario();  // fills what the library and Qt keep for later
    runEvents();
    size_t failures = 0;
    for (bool ranOut = true; ranOut; failures += ranOut ? 1 : 0) {
        const size_t before = liveBlocks;
        callsUntilFailure = failures + 1;
        attempt(scenario);
        ranOut = std::exchange(callsUntilFailure, 0) == 0;
        runEvents();
        const size_t after = liveBlocks;  // comparing allocates, too
        QCOMPARE(after, before);
        QCOMPARE(script().wrongFrees, 0);
        QVERIFY(script().records.empty());
        QVERIFY(script().buffers.empty());
        QVERIFY(script().items.empty());
    }
    QVERIFY(failures > 3);
}

void tst_Memory::aRouterGoesOnAfterAReceiverWithoutMemory()
{
    QStringList log;
    RecordingAgent agent(1, &log);
    XMLRouter router(nullptr, nullptr, "hub");
    router.add(&agent);
    agent.onReceive = [](XMLPacket *) { throw std::bad_alloc(); };
    for (int i = 0; i < 100; ++i) {
        router.send(makePacket(1, 1, QString::number(i)));
        attempt([&router] { router.send(); });
    }
    QCOMPARE(int(agent.packets.size()), 100);
}

QTEST_GUILESS_MAIN(tst_Memory)
#include "tst_memory.moc"
