#!/usr/bin/env bash
# installed.sh NEW-FOLDER [OLD-FOLDER]: the packages of a folder install, over older ones where there
# are some, serve, and leave nothing behind. For root, on a machine that has none of them installed.
set -euo pipefail
export DEBIAN_FRONTEND=noninteractive LC_ALL=C

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# fail MESSAGE
fail() {
    echo "installed.sh: $1" >&2
    exit 1
}

# Prints the names of the packages in a folder.
names() {
    local package
    for package in "$1"/*.deb; do
        dpkg-deb --field "$package" Package
    done
}

# Prints NAME VERSION of each package in a folder.
versions() {
    local package
    for package in "$1"/*.deb; do
        dpkg-deb --show "$package"
    done | sort
}

# install FOLDER: then exactly the versions of the folder are there.
install() {
    local installed
    chmod 755 "$work"
    cp "$1"/*.deb "$work"
    apt-get -q install -y --no-install-recommends "$work"/*.deb >"$work/log" 2>&1 || {
        tail -n 30 "$work/log"
        fail "$1 does not install"
    }
    rm "$work"/*.deb
    mapfile -t installed < <(names "$1")
    dpkg-query -W "${installed[@]}" | sed 's/:[^\t]*\t/\t/' | sort | diff <(versions "$1") - ||
        fail "not the versions of $1"
}

# What is called like something of ours where packages install files.
traces() {
    find /usr /etc /var/lib /var/cache /opt -xdev \
        \( -iname '*tqxml*' -o -iname '*tqserver*' -o -iname '*jobboard*' \) -not -path '*/apt/*' | sort
}

(($# == 1 || $# == 2)) || fail 'say which folder has the packages'
traces >"$work/before"
if (($# == 2)); then
    install "$2"
    tqxml init "$work/shop.db"
    tqxml list jobs --database "$work/shop.db" --format xml >"$work/old.xml"
    echo "installed: $(tqxml --version), which made a store"
fi
install "$1"
if (($# == 2)); then
    tqxml list jobs --database "$work/shop.db" --format xml | cmp - "$work/old.xml"
fi
echo "installed: $(tqxml --version), which lists $(tqxml list jobs --format xml | grep -c '<packetable ') jobs"
echo "installed: $(env -u DISPLAY -u WAYLAND_DISPLAY jobboard --version), without a display"
for package in $(names "$1"); do
    [[ -z $(dpkg --verify "$package") ]] || fail "$package is not as it was packed"
done

mapfile -t packages < <({ names "$1" && names "${2:-$1}"; } | sort -u)
apt-get -q purge -y "${packages[@]}" >"$work/log" 2>&1 || {
    tail -n 30 "$work/log"
    fail 'the packages cannot be purged'
}
traces | diff "$work/before" - || fail 'something is left behind'
if dpkg-query -W -f '${Package} ${db:Status-Status}\n' "${packages[@]}" 2>/dev/null |
    grep -v ' not-installed$'; then
    fail 'a package is not purged'
fi
echo "installed: ${#packages[@]} packages were purged, and nothing is left"
