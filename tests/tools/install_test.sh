#!/bin/sh
# Installs the build into a scratch prefix and builds a tiny consumer against
# it twice: through the CMake package (Korvex::Korvex) and through pkg-config.
set -eu
build=$1
consumer=$2
tmp=$(mktemp -d)
trap 'rm -rf "$tmp"' EXIT
cmake --install "$build" --prefix "$tmp/prefix" >/dev/null
for f in bin/korvex include/korvex/korvex.h include/korvex/korvex_types.h; do
  test -e "$tmp/prefix/$f" || { echo "missing after install: $f"; exit 1; }
done
libdir=$(ls -d "$tmp"/prefix/lib*/ | head -1)
test -e "$libdir/libKorvex.so" || { echo "missing after install: libKorvex.so"; exit 1; }
"$tmp/prefix/bin/korvex" hash -a streebog256 </dev/null >/dev/null

cmake -S "$consumer" -B "$tmp/b" -DCMAKE_PREFIX_PATH="$tmp/prefix" -DCMAKE_BUILD_TYPE=Release >/dev/null
cmake --build "$tmp/b" >/dev/null
"$tmp/b/consumer"
"$tmp/b/consumer_c"

if command -v pkg-config >/dev/null 2>&1; then
  pc="pkg-config"
  PKG_CONFIG_PATH="$libdir/pkgconfig" $pc --variable=prefix korvex | grep -q "^$tmp/prefix" \
    || { echo "korvex.pc does not point at the install prefix"; exit 1; }
  PKG_CONFIG_PATH="$libdir/pkgconfig" ${CXX:-c++} -std=c++17 -o "$tmp/consumer-pc" "$consumer/main.cpp" \
    $(PKG_CONFIG_PATH="$libdir/pkgconfig" $pc --cflags --libs korvex) -Wl,-rpath,"$libdir"
  "$tmp/consumer-pc"
  PKG_CONFIG_PATH="$libdir/pkgconfig" ${CC:-cc} -std=c11 -Wall -Wextra -Werror -o "$tmp/consumer-pc-c" "$consumer/main.c" \
    $(PKG_CONFIG_PATH="$libdir/pkgconfig" $pc --cflags --libs korvex) -Wl,-rpath,"$libdir"
  "$tmp/consumer-pc-c"
else
  echo "pkg-config not installed: the .pc check is skipped"
fi
echo "install test passed"
