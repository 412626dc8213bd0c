#!/usr/bin/env bash
# PFX and key fixtures made by OpenSSL 3.0 with Debian's GOST engine
# (libengine-gost-openssl), from the real CryptoPro keys and certificates
# beside this script. Run from anywhere; writes next to it.
set -euo pipefail
cd "$(dirname "$0")"
export OPENSSL_CONF=/dev/null
pass=pass:Test123
# Standard GOST PKCS#12, as people make it with the engine.
for g in g2001 g2012256 g2012512; do
  openssl pkcs12 -export -engine gost -inkey $g.key.pem -in $g.cert.pem -keypbe gost89 -certpbe gost89 \
    -macalg md_gost12_512 -passout $pass -out ossl-$g.pfx 2>/dev/null
done
# Streebog-256 MAC, and the key's certificate behind a CA certificate.
openssl pkcs12 -export -engine gost -inkey g2012256.key.pem -in <(cat pfx1.certs.pem g2012256.cert.pem) \
  -keypbe gost89 -certpbe gost89 -macalg md_gost12_256 -passout $pass -out ossl-mac256.pfx 2>/dev/null
# Older habits: an empty password, RC2-40 certificate bag, SHA-1 MAC.
openssl pkcs12 -export -engine gost -legacy -inkey g2012256.key.pem -in g2012256.cert.pem -keypbe gost89 \
  -certpbe PBE-SHA1-RC2-40 -macalg sha1 -passout pass: -out ossl-rc2.pfx 2>/dev/null
# Keys on curves the library lacks (refused by name).
openssl genpkey -engine gost -algorithm gost2012_256 -pkeyopt paramset:TCA -out ossl-tc26a.key.pem 2>/dev/null
openssl genpkey -engine gost -algorithm gost2012_512 -pkeyopt paramset:C -out ossl-512c.key.pem 2>/dev/null
# A key on TC26 256-bit paramSetB (the CryptoPro-A curve under its new name) and its public key.
openssl genpkey -engine gost -algorithm gost2012_256 -pkeyopt paramset:TCB -out ossl-tc26b.key.pem 2>/dev/null
openssl pkey -engine gost -in ossl-tc26b.key.pem -pubout -outform DER 2>/dev/null | tail -c 64 | xxd -p -c 64 > ossl-tc26b.pub.hex
# An iteration count past the limit: the engine-made file with its MAC count raised to 20,000,000.
python3 - <<'PY'
def parse(b, i):
    tag = b[i]; n = b[i + 1]; i += 2
    if n & 0x80:
        k = n & 0x7F; n = int.from_bytes(b[i:i + k], "big"); i += k
    return tag, b[i:i + n], i + n
def enc(tag, c):
    n = len(c)
    h = bytes([n]) if n < 128 else bytes([0x80 | ((n.bit_length() + 7) // 8)]) + n.to_bytes((n.bit_length() + 7) // 8, "big")
    return bytes([tag]) + h + c
def walk(b):
    out, i = b"", 0
    while i < len(b):
        tag, c, i = parse(b, i)
        if tag & 0x20: c = walk(c)
        elif tag == 2 and c == (2048).to_bytes(2, "big"): c = (20000000).to_bytes(4, "big")
        out += enc(tag, c)
    return out
src = open("ossl-g2012256.pfx", "rb").read()
tag, c, _ = parse(src, 0)
kids, i = [], 0
while i < len(c):
    t, cc, j = parse(c, i); kids.append(c[i:j]); i = j
open("ossl-iter.pfx", "wb").write(enc(tag, kids[0] + kids[1] + walk(kids[2])))
PY
echo "formats fixtures written"
