#!/usr/bin/env bash
# gdb.sh GDB PRINTERS PROGRAM: what the printers show is what the program has made.
set -euo pipefail
export LC_ALL=C.UTF-8  # gdb prints texts in the encoding of the locale

"$1" --batch --nx -iex 'set debuginfod enabled off' -iex 'set auto-load off' \
    -ex "source $2" -ex 'break lookHere' -ex run \
    -ex 'echo begin\n' -ex 'print unbuilt' -ex 'print built' -ex 'print item' -ex 'print action' \
    "$3" 2>&1 | sed '1,/^begin$/d' >gdb.out

cat >gdb.expected <<'EXPECTED'
$1 = XMLPacket from 3 to nobody, not built, items: 2 = {[0] = item of type 15, key 0:0, "" = {text = SI 15
1 Page one
TI 0
}, [1] = element msg = {msg = grün}}
$2 = XMLPacket, built: <tqxml><header><src/><dst/></header><body><action name='show "all"' originator="7" type="1000">a &lt; b</action></body></tqxml>
$3 = XMLPacketable <packetable/>, without a server item
$4 = XMLAction <action/>, in no group
EXPECTED
sed -E 's/ @0x[0-9a-f]+: / /' gdb.out | diff gdb.expected -
