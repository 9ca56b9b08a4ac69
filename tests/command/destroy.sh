# destroy.sh STORE TABLE: overwrites the first page of a table.
page=$(sqlite3 "$1" "SELECT rootpage - 1 FROM sqlite_master WHERE name = '$2'")
yes | head -c 4096 | dd of="$1" bs=4096 seek="$page" conv=notrunc status=none
