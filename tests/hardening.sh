#!/usr/bin/env bash
# hardening.sh DEB...: every program and library in the packages is hardened.
set -euo pipefail

# Printing functions that _FORTIFY_SOURCE replaces wherever they are called.
PLAIN_CALLS=' v?(f|d|s|sn|as)?printf(@|$)'
# Landing pads of indirect calls, by machine; what the compiler links in has a few of its own.
declare -A PADS=([x86-64]='endbr64' [AArch64]='bti|paciasp')

# complain FILE: prints what the file lacks.
complain() {
    local header segments dynamic calls pads
    header=$(readelf --wide --file-header "$1")
    segments=$(readelf --wide --segments "$1")
    dynamic=$(readelf --wide --dynamic "$1")
    calls=$(nm --dynamic --undefined-only "$1")

    grep -q 'Type: *DYN' <<<"$header" || echo 'is not position-independent'
    grep -q 'GNU_RELRO' <<<"$segments" || echo 'has no relocations that become read-only'
    grep -q 'GNU_STACK.* RW ' <<<"$segments" || echo 'has an executable stack'
    grep -q 'BIND_NOW' <<<"$dynamic" || echo 'is not bound at once'
    grep -q '__stack_chk_fail' <<<"$calls" || echo 'has no stack protector'
    ! grep -qE "$PLAIN_CALLS" <<<"$calls" || echo 'prints without _FORTIFY_SOURCE'
    for machine in "${!PADS[@]}"; do
        grep -qi "Machine: .*$machine" <<<"$header" || continue
        pads=$(objdump --disassemble "$1" | grep -cE "\s(${PADS[$machine]})") || true
        ((pads > 10)) || echo 'has no control-flow protection'
    done
}

folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
count=0
failed=false
for package in "$@"; do
    dpkg-deb --extract "$package" "$folder/${package##*/}"
done
while IFS= read -r file; do
    readelf --file-header "$file" >/dev/null 2>&1 || continue
    count=$((count + 1))
    while IFS= read -r complaint; do
        echo "${file#"$folder"/}: $complaint"
        failed=true
    done < <(complain "$file")
done < <(find "$folder" -type f)
((count > 0)) || { echo 'no program or library in the packages'; exit 1; }
[[ $failed == false ]] || exit 1
echo "hardening: $count programs and libraries"
