#!/bin/bash
# Test data for the PKCS#12 container: containers built by make_containers.py
# from the layout table. The Python PBKDF2 (HMAC GOST R 34.11-94) and counter
# mode are first checked against OpenSSL's GOST provider and engine.
set -euo pipefail
cd "$(dirname "$0")"
export PYTHONPATH=../cryptopro

want=$(openssl kdf -provider gostprov -provider default -keylen 32 -kdfopt digest:md_gost94 \
    -kdfopt pass:password -kdfopt hexsalt:01020304 -kdfopt iter:1024 PBKDF2 | tr -d ':\n' | tr A-F a-f)
got=$(python3 -c "import gost; print(gost.pbkdf2_94(b'password', bytes([1,2,3,4]), 1024).hex())")
[ "$want" = "$got" ] || { echo "PBKDF2 mismatch: $want $got"; exit 1; }
K=$(python3 -c "print(bytes(range(1,33)).hex())")
want=$(head -c 152 /dev/zero | openssl enc -engine gost -gost89-cnt -K $K -iv 1122334455667788 2>/dev/null | xxd -p | tr -d '\n')
got=$(python3 -c "import gost; print(gost.ctr(bytes(range(1,33)), bytes.fromhex('1122334455667788'), bytes(152), gost.SBOX_CRYPTOPRO_A).hex())")
[ "$want" = "$got" ] || { echo "CTR mismatch"; exit 1; }

python3 make_containers.py > pkcs12.txt
rm -rf ../cryptopro/__pycache__
echo "done"
