#!/usr/bin/env bash
# Regenerates the peer vectors of the encoding tests:
#   oid.txt    - OID content octets from `openssl asn1parse -genstr OID:...`
#   base64.txt - Base64 of pseudo-random data from coreutils `base64`
#   crc32.txt  - CRC-32 of pseudo-random data from python3's zlib.crc32
# Inputs are deterministic (fixed seed), so the output only changes when a
# peer does. Run from anywhere; writes next to this script.
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
tmp=$(mktemp -d); trap 'rm -rf "$tmp"' EXIT

oids=(
  1.2.643.2.2.3 1.2.643.2.2.9 1.2.643.2.2.19 1.2.643.2.2.20 1.2.643.2.2.21
  1.2.643.2.2.30.1 1.2.643.2.2.31.1 1.2.643.2.2.35.1 1.2.643.2.2.36.0
  1.2.643.7.1.1.1.1 1.2.643.7.1.1.2.2 1.2.643.7.1.1.3.2 1.2.643.7.1.2.1.2.1
  1.2.643.7.1.2.5.1.1 1.2.643.3.131.1.1 1.2.643.100.1 1.2.643.100.3
  1.2.840.113549.1.7.1 1.2.840.113549.1.7.2 1.2.840.113549.1.9.3
  1.2.840.113549.1.9.4 1.2.840.113549.1.9.5 1.2.840.113549.1.9.16.1.2
  1.2.840.113549.1.12.10.1.2 1.2.840.113549.1.5.12 1.2.840.10045.2.1
  1.3.6.1.5.5.7.3.1 1.3.6.1.4.1.311.21.7 1.3.132.0.34
  2.5.4.3 2.5.4.6 2.5.29.15 2.5.29.19 2.16.840.1.101.3.4.2.1
  0.9.2342.19200300.100.1.25 2.999.1 1.2.127 1.2.128 1.2.16383 1.2.16384
  1.2.2097151 1.2.2097152 1.2.268435455 1.2.268435456 1.2.4294967295
  2.47.1 1.39.65535
)
{
  echo "# OID text and its DER content octets, from openssl asn1parse -genstr"
  for o in "${oids[@]}"; do
    openssl asn1parse -genstr "OID:$o" -out "$tmp/o.der" >/dev/null
    der=$(python3 -c 'import sys; b=open(sys.argv[1],"rb").read(); assert b[0]==6 and b[1]<128; print(b[2:].hex())' "$tmp/o.der")
    printf '\ntext = %s\nder = %s\n' "$o" "$der"
  done
} > "$here/oid.txt"

python3 - "$tmp" <<'PY' > "$tmp/lens"
import random, sys
r = random.Random(4648)
lens = list(range(0, 49)) + [100, 255, 256, 257, 1000, 3000, 3001, 3002]
for n in lens:
    open(f"{sys.argv[1]}/d{n}", "wb").write(bytes(r.getrandbits(8) for _ in range(n)))
    print(n)
PY
{
  echo "# Data and its Base64, from coreutils base64 -w0"
  while read -r n; do
    printf '\ndata = %s\nb64 = %s\n' "$(xxd -p -c0 "$tmp/d$n")" "$(base64 -w0 < "$tmp/d$n")"
  done < "$tmp/lens"
} > "$here/base64.txt"

python3 - <<'PY' > "$here/crc32.txt"
import random, zlib
r = random.Random(802)
print("# Data and its CRC-32, from python3 zlib.crc32")
lens = list(range(0, 20)) + [31, 32, 33, 63, 64, 65, 255, 1000, 4097]
for n in lens:
    d = bytes(r.getrandbits(8) for _ in range(n))
    print(f"\ndata = {d.hex()}\ncrc = {zlib.crc32(d):08x}")
PY
