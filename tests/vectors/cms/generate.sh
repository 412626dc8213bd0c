#!/usr/bin/env bash
# GOST R 34.10-2012 certificates and CMS messages made by OpenSSL's GOST
# engine (libengine-gost-openssl) for the korvex program's tests: a CA and a
# leaf per key size, one expired leaf, messages attached and detached, with
# and without signed attributes. The private keys are also written as korvex
# key files (little-endian hex), taken from `openssl pkey -text`.
# Run from anywhere; writes next to this script.
set -euo pipefail
cd "$(dirname "$0")"
export OPENSSL_CONF=/dev/null
E="-engine gost"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

printf 'Korvex CMS fixture: a document signed under GOST R 34.10-2012.\n' > doc.txt

# korvex key file of an OpenSSL key: values are printed big-endian.
korvex_key() {  # pem curve-name out
  openssl pkey $E -in "$1" -text -noout 2>/dev/null | python3 -c '
import sys, re
t = sys.stdin.read().replace("\n", "").replace(" ", "")
le = lambda h: bytes.fromhex(h)[::-1].hex()
d = re.search(r"Privatekey:([0-9A-F]+)", t).group(1)
x = re.search(r"X:([0-9A-F]+)", t).group(1)
y = re.search(r"Y:([0-9A-F]+)", t).group(1)
w = 64 if len(d) <= 64 and len(x) <= 64 else 128
pad = lambda h: h.rjust(w, "0")
print("# korvex GOST R 34.10 key, little-endian values")
print("curve = " + sys.argv[1])
print("private = " + le(pad(d)))
print("public = " + le(pad(x)) + le(pad(y)))' "$2" > "$3"
}

cat > "$work/ca.cnf" <<'CNF'
[ca]
default_ca = ca
[ca]
dir = WORK
database = WORK/index.txt
new_certs_dir = WORK
serial = WORK/serial
policy = any
copy_extensions = none
unique_subject = no
preserve = yes
[any]
commonName = supplied
surname = optional
givenName = optional
title = optional
organizationName = optional
localityName = optional
streetAddress = optional
countryName = optional
SNILS = optional
INN = optional
OGRN = optional
[leaf]
basicConstraints = CA:FALSE
keyUsage = critical, digitalSignature, nonRepudiation
extendedKeyUsage = emailProtection, clientAuth
subjectAltName = email:ivanov@example.ru, DNS:example.ru
certificatePolicies = 1.2.643.100.113.1, 2.5.29.32.0
subjectKeyIdentifier = hash
authorityKeyIdentifier = keyid
CNF
sed -i "s|WORK|$work|g" "$work/ca.cnf"
: > "$work/index.txt"
echo 1000 > "$work/serial"
leaf_subj="/CN=Ivanov Ivan/SN=Ivanov/GN=Ivan/title=Director/O=Romashka/L=Moscow/street=Tverskaya 1/C=RU/SNILS=12345678901/INN=007712345678/OGRN=1027700132195"

for s in 256:A 512:A 512:B; do
  bits=${s%:*} set=${s#*:}
  n=$bits$set
  alg=gost2012_$bits md=md_gost12_$bits
  name=$([ "$bits" = 256 ] && echo "$set" || echo "512$set")
  for who in ca leaf; do
    openssl genpkey $E -algorithm $alg -pkeyopt paramset:$set -out "$work/$who.pem" 2>/dev/null
  done
  cp "$work/leaf.pem" "leaf$n.pem"
  korvex_key "$work/leaf.pem" "$name" "leaf$n.key"
  openssl req $E -new -x509 -key "$work/ca.pem" -$md -days 7300 -subj "/CN=Test CA $n/O=Korvex tests/C=RU" \
    -addext "basicConstraints=critical,CA:TRUE" -addext "keyUsage=critical,keyCertSign,cRLSign" \
    -out "ca$n.crt" 2>/dev/null
  openssl req $E -new -key "$work/leaf.pem" -$md -subj "$leaf_subj" -out "$work/leaf.csr" 2>/dev/null
  openssl ca $E -batch -config "$work/ca.cnf" -extensions leaf -cert "ca$n.crt" -keyfile "$work/ca.pem" -md $md \
    -startdate 20240101000000Z -enddate 20600101000000Z -in "$work/leaf.csr" -out "$work/leaf.crt" 2>/dev/null
  openssl x509 -in "$work/leaf.crt" -out "leaf$n.crt"
  # Messages: attached and detached with signed attributes, attached without.
  openssl cms -sign $E -binary -nodetach -md $md -outform DER -in doc.txt -signer "leaf$n.crt" \
    -inkey "$work/leaf.pem" -out "ossl$n-attached.der" 2>/dev/null
  openssl cms -sign $E -binary -md $md -outform DER -in doc.txt -signer "leaf$n.crt" \
    -inkey "$work/leaf.pem" -out "ossl$n-detached.der" 2>/dev/null
  openssl cms -sign $E -binary -nodetach -noattr -md $md -outform DER -in doc.txt -signer "leaf$n.crt" \
    -inkey "$work/leaf.pem" -out "ossl$n-noattr.der" 2>/dev/null
  for m in attached noattr; do
    openssl cms -verify $E -binary -inform DER -in "ossl$n-$m.der" -CAfile "ca$n.crt" -out /dev/null 2>/dev/null
  done
  # An expired leaf of the 256-bit CA.
  if [ "$n" = 256A ]; then
    openssl ca $E -batch -config "$work/ca.cnf" -extensions leaf -cert "ca$n.crt" -keyfile "$work/ca.pem" -md $md \
      -startdate 20200101000000Z -enddate 20210101000000Z -in "$work/leaf.csr" -out "$work/old.crt" 2>/dev/null
    openssl x509 -in "$work/old.crt" -out "expired$n.crt"
  fi
done


# A certificate whose public key OCTET STRING says 32 octets instead of 64
# (the rest of the BIT STRING left as it was): the key is short.
python3 - <<'PY'
import base64
pem = open("leaf256A.crt").read()
der = bytearray(base64.b64decode("".join(l for l in pem.splitlines() if "-----" not in l)))
at = der.index(bytes([0x03, 0x43, 0x00, 0x04, 0x40]))
der[at + 4] = 0x20
open("shortkey256A.der", "wb").write(der)
PY
echo "cms fixtures written"

# The 256-bit leaf with one letter of its subject changed (L=Noscow): the CA's
# signature no longer holds.
python3 - <<'PY'
import base64
pem = open("leaf256A.crt").read()
der = bytearray(base64.b64decode("".join(l for l in pem.splitlines() if "-----" not in l)))
der[der.index(b"Moscow")] = ord("N")
open("altered256A.der", "wb").write(der)
PY
