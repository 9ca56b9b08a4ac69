# shellcheck shell=bash
# Verbs of ./dev about what is handed to users: packages, reference documentation, the binary
# interface. Sourced by ./dev.

verb_package() {
    local qt=6 preset=release build
    if (($#)); then
        [[ $* == --qt5 ]] || misuse "package has no option \"$1\""
        qt=5
    fi
    build=build/package-qt$qt
    need build qt$qt package
    configure "$preset" -B "$build" -DQT_VERSION_MAJOR=$qt -DCMAKE_INSTALL_PREFIX=/usr \
        -DCMAKE_SKIP_INSTALL_RPATH=ON >&2
    cmake --build "$build" >&2
    rm -rf "$build/packages"
    (cd "$build" && cpack -G DEB -B packages) >&2
    lintian --allow-root --fail-on error --tag-display-limit 0 "$build"/packages/*.deb >&2
    printf '%s\n' "$build"/packages/*.deb
}

verb_docs() {
    (($# == 0)) || misuse "docs has no option \"$1\""
    need docs
    mkdir -p build/docs
    doxygen doc/Doxyfile >&2
    echo build/docs/html/index.html
}

# Describes the binary interface that the tests hold the libraries to from here on.
verb_abi() {
    (($# == 0)) || misuse "abi has no option \"$1\""
    local library
    need build qt6 abi
    configure dev >&2
    cmake --build --preset dev --target tqxml tqserver >&2
    mkdir -p abi
    for library in xml/libtqxml serverlib/embedded/libtqserver; do
        abidw --no-corpus-path --no-comp-dir-path --no-show-locs --no-write-default-sizes \
            --exported-interfaces-only --drop-undefined-syms "build/dev/$library.so.1" |
            sed "s#path='$PWD/#path='#" | gzip -9n >"abi/${library##*/}.abi.gz"
        echo "abi/${library##*/}.abi.gz"
    done
}
