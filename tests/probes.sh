#!/usr/bin/env bash
# probes.sh listed LIBRARY HEADER: the library has a probe for each semaphore of the header.
# probes.sh fired PROGRAM: the first example passes the probes that it should, as gdb sees them.
set -euo pipefail
export LC_ALL=C

SKIPPED=77  # exit code

listed() {
    diff <(grep -oE 'tqxml_[a-z_]+_semaphore' "$2" | sed 's/^tqxml_//; s/_semaphore$//' | sort) \
        <(readelf --notes "$1" | grep -A 1 'Provider: tqxml$' | sed -n 's/^ *Name: //p' | sort)
}

# at PROBE [FORMAT ARGUMENTS]: commands of gdb that print a line whenever the probe is passed.
at() {
    printf '%s\n' "break -probe-stap tqxml:$1" commands silent \
        "printf \"probe: $1 ${2:-}\\n\"${3:+, $3}" continue end
}

fired() {
    {
        printf '%s\n' 'break main' run
        at agent_added '%d of type %d' "\$_probe_arg0, \$_probe_arg1"
        at agent_removed '%d of type %d' "\$_probe_arg0, \$_probe_arg1"
        at packet_sent 'from %d to %d' "\$_probe_arg1, \$_probe_arg2"
        at packet_delivered 'from %d to %d' "\$_probe_arg1, \$_probe_arg2"
        at text_to_dom_begin
        echo continue
    } >"$folder/commands"
    gdb --nx --batch --command "$folder/commands" "$1" >"$folder/output" 2>&1
    if ! grep -q 'Breakpoint 1, .*main' "$folder/output"; then
        cat "$folder/output"
        echo 'SKIPPED: gdb cannot run programs on this machine'
        exit $SKIPPED
    fi
    sed -n 's/^probe: //p' "$folder/output" | uniq --count | sed "s/^ *//; s/ *$//" |
        diff "$folder/expected" -
}

folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cat >"$folder/expected" <<'END'
1 agent_added 1 of type 1
1 packet_sent from 1 to -1
1 packet_sent from 1 to 1
1 packet_delivered from 1 to -1
1 packet_sent from -1 to 1
1 packet_delivered from 1 to 1
1 packet_delivered from -1 to 1
60 text_to_dom_begin
1 agent_removed 1 of type 1
1 agent_removed -1 of type 0
END
"$@"
