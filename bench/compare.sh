#!/usr/bin/env bash
# One run of the library's benchmarks beside the peers' own speed figures on
# the same machine: OpenSSL's GOST provider (openssl speed), Botan
# (botan speed) and Nettle (bench/peers, built when nettle-dev is there).
# Usage: bench/compare.sh [BUILD_DIR]
set -uo pipefail
build=${1:-build}
here=$(cd "$(dirname "$0")" && pwd)
export OPENSSL_CONF=/dev/null
prov="-provider gostprov -provider default"

echo "== korvex_bench"
"$build/korvex_bench" --benchmark_counters_tabular=true ${KORVEX_BENCH_FILTER:+--benchmark_filter=$KORVEX_BENCH_FILTER} 2>/dev/null

if [ -x "$build/peer_nettle_bench" ]; then
  echo "== nettle (bench/peers)"
  "$build/peer_nettle_bench" 2>/dev/null
fi

echo "== openssl speed (8 KiB)"
for e in gost89-cnt gost89 md_gost94 md_gost12_256 md_gost12_512; do
  openssl speed $prov -bytes 8192 -seconds 2 -evp $e 2>/dev/null | tail -1
done

echo "== botan speed"
botan speed --msec=2000 --buf-size=8192 GOST-28147-89 'CFB(GOST-28147-89)' 'CBC(GOST-28147-89,NoPadding)' \
  GOST-34.11 Streebog-256 Streebog-512 GOST-34.10 2>/dev/null

echo "== nettle"
if cc -O2 -o "$build/nettle_speed" "$here/nettle_speed.c" -lnettle 2>/dev/null; then
  "$build/nettle_speed"
else
  echo "nettle-dev not installed: no Nettle figure"
fi
