#!/usr/bin/env bash
# abi.sh write|compare FOLDER VERSION LIBRARY... OBJECT: the binary interface as text, one fact a line.
#
# FOLDER/NAME.symbols is what each library exports, each line with the version since which it does,
# in the form of the symbols files of Debian packages. FOLDER/classes.layout is, from the debug
# information of an object that names every public class: sizes, offsets of members, places of
# virtual functions. Versions of Qt and of the compiler leave no trace in them.
set -euo pipefail
export LC_ALL=C

# symbols LIBRARY; a constructor or destructor has several symbols, of one name.
# Names that KNOWN has, a file of such lines, keep their version.
symbols() {  # LIBRARY VERSION KNOWN
    nm --dynamic --defined-only --demangle "$1" | cut -d ' ' -f 3- | sort -u |
        awk -v version="$2" -v known="$3" '
            BEGIN {
                while ((getline < known) > 0) {
                    since = $NF
                    sub(/ [^ ]+$/, "")
                    versions[$0] = since
                }
            }
            {
                line = " (c++)\"" $0 "@Base\""
                print line, line in versions ? versions[line] : version
            }'
}

# layout OBJECT: a class is an entry of the first level; what is directly below it, its member.
# Where destructors are among the virtual functions, compilers leave out.
layout() {
    local classes
    classes=$(nm "$1" | sed -n 's/.* public_//p' | tr '\n' ' ')
    readelf --wide --debug-dump=info "$1" | awk -v classes="$classes" '
        function print_entry() {
            if (level == 1 && name in public && size != "") {
                class = name
                print class ": size " size
            }
            if (level != 2 || class == "")
                return
            if (kind == "inheritance")
                print class ": base at " offset
            if (kind == "member" && offset != "")
                printf "%s: at %3d: %s\n", class, offset, name
            if (slot != "" && name !~ /^~/)
                printf "%s: virtual %2d: %s\n", class, slot, symbol
        }
        BEGIN {
            count = split(classes, names, " ")
            for (i = 1; i <= count; ++i)
                public[names[i]]
        }
        /Abbrev Number: / {
            print_entry()
            level = substr($1, 2, index($1, ">") - 2)
            kind = $NF
            gsub(/\(DW_TAG_|\)/, "", kind)
            if (level == 1)
                class = ""
            name = symbol = size = offset = slot = ""
        }
        / DW_AT_name / { name = $NF; sub(/^_vptr.*/, "(virtual functions)", name) }
        / DW_AT_linkage_name/ { symbol = $NF }
        / DW_AT_byte_size / { size = $NF }
        / DW_AT_data_member_location/ { offset = $NF }
        / DW_AT_vtable_elem_location/ { slot = $NF; sub(/\)/, "", slot) }
        END { print_entry() }' | c++filt | sort -u
}

# write_to FOLDER KNOWN VERSION LIBRARY... OBJECT: KNOWN is the folder of what was written before.
write_to() {
    local library name
    mkdir -p "$1"
    for library in "${@:4:$#-4}"; do
        name=${library##*/}
        name=${name%%.so*}.symbols
        symbols "$library" "$3" "$2/$name" >"$1/$name.new"
        mv "$1/$name.new" "$1/$name"
    done
    layout "${!#}" >"$1/classes.layout"
}

write() { write_to "$1" "$@"; }

compare() {
    now=$(mktemp -d)
    trap 'rm -rf "$now"' EXIT
    write_to "$now" "$@"
    diff -ru "$1" "$now" || {
        echo 'The binary interface changed. Where that is meant, ./dev abi writes it again.'
        exit 1
    }
}

"$@"
