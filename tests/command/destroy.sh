#!/bin/sh
# destroy.sh STORE TABLE [KIND]: overwrites the first page of a table, or its last page of a kind.
page=$(sqlite3 "$1" "SELECT rootpage FROM sqlite_master WHERE name = '$2'")
[ -z "$3" ] ||
    page=$(sqlite3 "$1" "SELECT max(pageno) FROM dbstat WHERE name = '$2' AND pagetype = '$3'")
yes | head -c 4096 | dd of="$1" bs=4096 seek=$((page - 1)) conv=notrunc status=none
