#!/bin/bash
# Test data for the CryptoPro container readers: certificates made by
# OpenSSL's GOST engine for known private keys, and containers built by
# make_containers.py. The Python GOST primitives are first checked against
# OpenSSL. Output: cryptopro.txt and cert_*.der in this folder.
set -euo pipefail
cd "$(dirname "$0")"
export PYTHONPATH=.
ENGINE="-engine gost"

# Private keys (big-endian hex, below q of every curve used).
D1=7A929ADE789BB9BE10ED359DD39A72C11B60961F49397EEE1D19CE9891EC3B28
D2=0B293BE050D0082BDAE785631A6BAB68F35B42786D6DDA56AFAF169891040F77

# Cross-check of the Python primitives against OpenSSL.
K=$(python3 -c "print(bytes(range(1,33)).hex())")
want=$(printf 'This is message, length=32 bytes' | openssl dgst $ENGINE -md_gost94 2>/dev/null | awk '{print $2}')
got=$(python3 -c "import gost; print(gost.hash94(b'This is message, length=32 bytes').hex())")
[ "$want" = "$got" ] || { echo "hash94 mismatch"; exit 1; }
want=$(printf '0123456789ab' | openssl dgst $ENGINE -mac gost-mac -macopt hexkey:$K 2>/dev/null | awk '{print $2}')
got=$(python3 -c "import gost; print(gost.mac(bytes(range(1,33)), b'0123456789ab', gost.SBOX_CRYPTOPRO_A)[:4].hex())")
[ "$want" = "$got" ] || { echo "MAC mismatch"; exit 1; }
# The engine's gost89-cbc uses parameter set Z: one CBC block with a zero IV is ECB.
want=$(printf '\x11\x22\x33\x44\x55\x66\x77\x88' | openssl enc $ENGINE -gost89-cbc -K $K -iv 0000000000000000 -nopad 2>/dev/null | xxd -p)
got=$(python3 -c "import gost; print(gost.encrypt_block(bytes(range(1,33)), bytes.fromhex('1122334455667788'), gost.SBOX_Z).hex())")
[ "$want" = "$got" ] || { echo "ECB (Z) mismatch"; exit 1; }
want=$(printf 'AAAAAAAAAAAAAAAAAAAA' | openssl enc $ENGINE -gost89-cnt -K $K -iv 0102030405060708 2>/dev/null | xxd -p)
got=$(python3 -c "import gost; print(gost.ctr(bytes(range(1,33)), bytes.fromhex('0102030405060708'), b'A'*20, gost.SBOX_CRYPTOPRO_A).hex())")
[ "$want" = "$got" ] || { echo "CTR (A) mismatch"; exit 1; }

tmp=$(mktemp -d)
trap 'rm -rf "$tmp"' EXIT
cert() {  # key hex, curve arc, output
    python3 pkcs8.py "$1" "$2" > "$tmp/key.der"
    openssl req $ENGINE -new -x509 -keyform DER -key "$tmp/key.der" -subj "/CN=Korvex CryptoPro test" \
        -days 36500 -md_gost94 -outform DER -out "$3" 2>/dev/null
}
cert $D1 1 cert_d1_A.der     # the container's key, CryptoPro-A
cert $D2 1 cert_d2_A.der     # a foreign key
cert $D1 2 cert_d1_B.der     # the container's key on CryptoPro-B
cert $D1 3 cert_d1_C.der     # and on CryptoPro-C

python3 make_containers.py $D1 $D2 > cryptopro.txt
echo "done"
