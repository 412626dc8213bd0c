#!/usr/bin/env bash
# Fixtures for the korvex program's tests, made with independent tools:
# gostsum/gost12sum (package gostsum) and OpenSSL's GOST engine
# (libengine-gost-openssl). Run from anywhere; writes next to this script.
set -euo pipefail
cd "$(dirname "$0")"
export OPENSSL_CONF=/dev/null

# Files to hash: deterministic contents.
printf 'abc' > abc.txt
: > empty.txt
python3 -c 'import sys; sys.stdout.buffer.write(bytes((i * 7 + 3) % 256 for i in range(10000)))' > pattern.bin
printf 'Korvex fixture document, signed by OpenSSL.\n' > doc.txt

# gostsum (like OpenSSL) hashes the empty message differently from Nettle,
# Botan and this library, so its list leaves the empty file out.
gostsum abc.txt pattern.bin > gostsum.txt
nettle-hash -a gosthash94cp < empty.txt | tr -d ' ' | sed 's/gosthash94cp$//' > nettle-gost94-empty.txt
gost12sum abc.txt empty.txt pattern.bin > gost12sum.txt
gost12sum -l abc.txt empty.txt pattern.bin > gost12sum-512.txt
for a in md_gost94 md_gost12_256 md_gost12_512; do
  openssl dgst -engine gost -$a -r abc.txt empty.txt pattern.bin 2>/dev/null | sed 's/ \*/ /' > "openssl-$a.txt"
done

# CFB with CryptoPro key meshing every 1024 bytes (OpenSSL's gost89 cipher).
key=0123456789abcdef0123456789abcdeffedcba9876543210fedcba9876543210
iv=0102030405060708
echo "$key" > cfb.key
echo "$iv" > cfb.iv
CRYPT_PARAMS=id-Gost28147-89-CryptoPro-A-ParamSet openssl enc -engine gost -gost89 -K "$key" -iv "$iv" \
  -in pattern.bin -out pattern.gost89 2>/dev/null
# Counter mode with the same meshing (gost89-cnt: CryptoPro-A).
openssl enc -engine gost -gost89-cnt -K "$key" -iv "$iv" -in pattern.bin -out pattern.gost89cnt 2>/dev/null

# Keys, signatures and certificates made by OpenSSL.
openssl genpkey -engine gost -algorithm gost2001 -pkeyopt paramset:A -out ossl-2001A.pem 2>/dev/null
openssl dgst -engine gost -md_gost94 -sign ossl-2001A.pem -out ossl-2001A.sig doc.txt 2>/dev/null
openssl req -engine gost -new -x509 -key ossl-2001A.pem -md_gost94 -days 3650 -subj "/CN=OpenSSL signer/O=Peer/C=RU" \
  -out ossl-2001A.crt 2>/dev/null
openssl cms -sign -engine gost -md md_gost94 -binary -nodetach -outform DER -in doc.txt -signer ossl-2001A.crt \
  -inkey ossl-2001A.pem -out ossl-cms.der 2>/dev/null
openssl genpkey -engine gost -algorithm gost2012_512 -pkeyopt paramset:A -out ossl-512A.pem 2>/dev/null
openssl dgst -engine gost -md_gost12_512 -sign ossl-512A.pem -out ossl-512A.sig doc.txt 2>/dev/null

# Self-checks of the peer fixtures.
openssl dgst -engine gost -md_gost94 -verify <(openssl pkey -engine gost -in ossl-2001A.pem -pubout 2>/dev/null) \
  -signature ossl-2001A.sig doc.txt 2>/dev/null | grep -q OK
openssl cms -verify -engine gost -binary -inform DER -in ossl-cms.der -CAfile ossl-2001A.crt -out /dev/null 2>/dev/null
echo "tools fixtures written"

# CryptoPro container folders for the program's tests and the README tour,
# taken from the containers of ../cryptopro (built there from the format's
# definition, independently of the library).
python3 - <<'PY'
import os
recs, cur = [], {}
for line in open("../cryptopro/cryptopro.txt"):
    line = line.strip()
    if not line or line.startswith("#"):
        if cur: recs.append(cur); cur = {}
        continue
    k, _, v = line.partition(" =")
    cur[k] = v.strip()
if cur: recs.append(cur)
by = {r["name"]: r for r in recs}
for folder, name in (("container.000", "one_key"), ("container.001", "two_keys_match_second")):
    os.makedirs(folder, exist_ok=True)
    r = by[name]
    open(f"{folder}/primary.key", "wb").write(bytes.fromhex(r["primary"]))
    open(f"{folder}/masks.key", "wb").write(bytes.fromhex(r["masks"]))
    open(f"{folder}/password.txt", "w").write(bytes.fromhex(r["password"]).decode() + "\n")
    open(f"{folder}/key.txt", "w").write(r["key"] + "\n")
PY
cp ../cryptopro/cert_d1_A.der owner.crt
echo "cryptopro folders written"
