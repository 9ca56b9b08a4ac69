#include "script.h"
#include "tqcommserver.h"
#include "util.h"
#include "xmlaction.h"
#include "xmlactiongroup.h"
#include "xmlagentbroker.h"
#include "xmlpacketable.h"
#include "xmlrouter.h"
#include "xmlui.h"
#include "xpkreference.h"

#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>

#include <dlfcn.h>
#include <execinfo.h>

// Memory runs out, at one allocation after the other: at each call of operator new that the library
// makes itself, also inside of templates, or that Qt makes for it where an object is constructed,
// guarded by a QPointer or deleted later; then at each call of malloc() that QtCore makes for it,
// for texts and lists. All other calls are left alone: QtXml, and QtCore where it connects signals,
// leak or crash on their own when one fails.

namespace {

size_t firstFailure = 0;  // number of the call that a scenario is to fail at
size_t untilFailure = 0;  // calls until then; 0 for never
size_t blocks = 0;  // allocated and not freed
bool failsInQt = false;  // malloc(), not operator new

bool isLibrary(const Dl_info &info)
{
    const char *file = strrchr(info.dli_fname, '/');  // folders may have its name, too
    return file && strncmp(file, "/libtqxml", 9) == 0;
}

[[maybe_unused]] bool isQtForLibrary()
{
    void *frames[24];
    const int count = backtrace(frames, 24);
    bool isQt = false;
    for (int i = 0; i < count; ++i) {
        Dl_info info;
        if (dladdr(frames[i], &info) == 0) {
            return false;
        }
        if (strstr(info.dli_fname, "Core.so")) {
            isQt = true;
            if (info.dli_sname && strstr(info.dli_sname, "QObject")) {
                return false;
            }
        } else if (isQt || !strstr(info.dli_fname, "tst_memory")) {
            return isQt && isLibrary(info);
        }
    }
    return false;
}

[[maybe_unused]] bool failsNow()
{
    static bool looks = false;  // which may allocate itself
    if (looks || untilFailure == 0 || !failsInQt) {
        return false;
    }
    looks = true;
    const bool isMeant = isQtForLibrary();
    looks = false;
    return isMeant && --untilFailure == 0;
}

void *allocate(size_t size, const void *caller)
{
    Dl_info info;
    bool fails = false;
    if (untilFailure > 0 && !failsInQt && dladdr(caller, &info) != 0) {
        const char *symbol = info.dli_sname ? info.dli_sname : "";
        fails = (isLibrary(info) || strstr(symbol, "QObjectC") || strstr(symbol, "getAndRef") ||
                    strstr(symbol, "deleteLater")) &&
            --untilFailure == 0;
    }
    void *block = fails ? nullptr : std::malloc(size + 1);
    blocks += block ? 1 : 0;
    return block;
}

// Runs what may run out of memory.
template<typename Use>
void attempt(Use use)
{
    untilFailure = firstFailure;
    try {
        use();
    } catch (const std::bad_alloc &) {
    }
    firstFailure = std::exchange(untilFailure, 0) > 0 ? 0 : firstFailure;  // 0: nothing failed
}

std::unique_ptr<TQPacketable> makeItem(unsigned key)
{
    QByteArray text("SI 70\n1 text\n3 2 9\n4 3 AAAA\nSL 1\nSI 70\n5 2 1 2\nTI 0\nTL 0\nTI 0\n");
    std::unique_ptr<TQPacketable> item(PacketableUtil::getPacketable(PACKETDATATYPES(0x70)));
    item->fromPacket(text.data(), unsigned(text.size()), false, true);
    item->dbkey = { key, 9 };
    return item;
}

void convert()
{
    TQCommServer server("");
    ArchiveNode root(makeItem(1).release());
    root.add(new ArchiveNode(makeItem(2).release()));
    XMLPacket packet;
    QList<XPKReference *> references;
    attempt([&] {
        packet.append(*root.packetable, true);
        const std::unique_ptr<XMLPacketable> item(XMLPacketable::fromArchiveNode(server, &root));
        item->getXPKReferences(references);
        item->toPacket(item->getNodeConst());
        const std::unique_ptr<TQPacketable> back(item->getData());
    });
    qDeleteAll(references);
}

// Sends a request, or with a type of 0 a packet that nobody can take, and one to the sender.
void send(int type)
{
    QStringList log;
    TQCommServer server("");
    RecordingAgent agent(1, &log);
    XMLRouter router(&server, nullptr, "hub");
    router.add(&agent);
    QList<XMLPacket *> packets { agent.getXMLPacket(type == 0 ? 99 : -1), agent.getXMLPacket(1) };
    attempt([&] {
        const XMLRouter another(&server, nullptr, "another");
        while (!packets.isEmpty()) {
            XMLAction request(str("name"), type, 1);
            packets.first()->append(request);
            router.send(packets.first());
            packets.removeFirst();
        }
        router.send();
    });
    router.send();  // goes on where it stopped
    qDeleteAll(packets);  // that were not taken over
}

void updateGroup()
{
    XMLUI page;
    XMLAction actions[3];
    XMLActionGroup group(nullptr, "group");
    TQKEY_ELEMENT key { 1, 2 };
    for (XMLAction &action : actions) {
        group.addAction(&action);
        page.append(action);
    }
    actions[0].setTQKEYList({ &key, &key, &key });
    attempt([&] {
        actions[0].toggle();
        actions[1].toggle();
        qDeleteAll(actions[0].getTQKEYList());
        page.visibleActionCount();
    });
    actions[0].setChecked(true);
    QVERIFY(actions[0].isChecked() && !actions[1].isChecked());
}

void (*const SCENARIOS[])() = { convert, updateGroup, [] { send(0); }, [] { send(1000); },
    [] { send(1001); }, [] { send(1002); }, [] { send(1003); } };

}  // namespace

#ifdef TQXML_OWN_MALLOC
extern "C" {
void *__libc_malloc(size_t size);
void *__libc_realloc(void *block, size_t size);
void *malloc(size_t size) { return failsNow() ? nullptr : __libc_malloc(size); }
void *realloc(void *block, size_t size)
{
    return failsNow() ? nullptr : __libc_realloc(block, size);
}
}
constexpr bool HAS_OWN_MALLOC = true;
#else
constexpr bool HAS_OWN_MALLOC = false;
#endif

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
    blocks -= block ? 1 : 0;
    std::free(block);
}
void operator delete(void *block, size_t) noexcept { operator delete(block); }

class tst_Memory : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void failure_data();
    void failure();
    void receiver();
};

void tst_Memory::failure_data()
{
    QTest::addColumn<bool>("inQt");
    QTest::newRow("operator new") << false;
    if (HAS_OWN_MALLOC) {
        QTest::newRow("malloc") << true;
    }
}

// Whatever fails: it is all freed, once. The first runs fill what is kept for later ones.
void tst_Memory::failure()
{
    QFETCH(bool, inQt);
    failsInQt = inQt;
    const Script::Table table = { { 1, 1, 0, 1, {} }, { 14, 3, 0, 4, {} }, { 23, 4, 0, 1, {} },
        { 17, 5, 0, 4, {} } };
    script() = Script();
    script().isRecording = false;
    script().tables = { { 0x70, table }, { 8, table }, { 21, table }, { 86, table } };
    script().owners = { { 15, { { { 1, 8 }, "A" } } }, { 85, { { { 5, 85 }, "C" } } } };
    script().jobs[1001] = { { { 1, 21 }, "J1", 5, "P", 7 }, { { 2, 21 }, "J2", 4, "P", 7 } };
    script().books[5] = { { { 51, 86 }, "B1" }, { { 52, 86 }, "B2" } };
    for (void (*const scenario)() : SCENARIOS) {
        size_t run = 0;
        for (; run < 3 || firstFailure > 0; ++run) {
            const size_t before = blocks;
            firstFailure = run < 2 ? 0 : run - 1;
            scenario();
            runEvents();
            QVERIFY(run < 2 || blocks == before);
            QVERIFY(script().wrongFrees == 0 && script().items.empty());
            QVERIFY(script().records.empty() && script().buffers.empty());
        }
        QVERIFY(run > 6);
    }
}

// A receiver, or a broker, without memory does not keep the router from going on.
void tst_Memory::receiver()
{
    struct Poor : XMLAgentBroker
    {
        int supplyAgent(int) override
        {
            ++calls;
            throw std::bad_alloc();
        }
        int calls = 0;
    };
    QStringList log;
    RecordingAgent agent(1, &log);
    XMLRouter router(nullptr, nullptr, "hub");
    router.add(&agent);
    auto broker = new Poor;
    router.setAgentBroker(broker);
    agent.onReceive = [](XMLPacket *) { throw std::bad_alloc(); };
    for (int i = 0; i < 200; ++i) {
        router.send(makePacket(1, 1, QString::number(i)));
        attempt([&] { router.send(); });
        attempt([&] { router.supplyAgentOfType(9); });
    }
    QVERIFY(agent.packets.size() == 200 && broker->calls == 200);
}

QTEST_GUILESS_MAIN(tst_Memory)
#include "tst_memory.moc"
