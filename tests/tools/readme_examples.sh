#!/usr/bin/env bash
# Runs the shell examples of the README's tour in a scratch folder, with the
# built korvex first on PATH. Examples that need OpenSSL's GOST engine are run
# only when it is installed; the CryptoPro example runs on the committed test
# container. Usage: readme_examples.sh README.md DIR-OF-KORVEX
set -euo pipefail
readme=$1
bindir=$2
here=$(cd "$(dirname "$0")" && pwd)
vectors=$here/../vectors
tmp=$(mktemp -d)
trap 'rm -rf "$tmp"' EXIT
export PATH="$bindir:$PATH"
export OPENSSL_CONF=/dev/null
cd "$tmp"

have_openssl=0
openssl engine gost >/dev/null 2>&1 && have_openssl=1

# Inputs the examples name.
printf 'A document to sign.\n' > document.txt
cp "$vectors/tools/ossl-2001A.crt" peer.crt
cp "$vectors/tools/ossl-2001A.pem" peer.pem
cp -r "$vectors/tools/container.000" container.000
cp "$vectors/tools/owner.crt" owner.crt
cp -r "$vectors/formats/csp/g2012512.000" mykey.000
cp "$vectors/formats/pfx1.pfx" exported.pfx

# Pull the ```sh blocks out of the tour section.
python3 - "$readme" > blocks.txt <<'PY'
import sys
text = open(sys.argv[1]).read()
tour = text.split("## A short tour", 1)[1].split("\n## ", 1)[0]
blocks, cur = [], None
for line in tour.splitlines():
    if line.strip() == "```sh":
        cur = []
    elif line.strip() == "```" and cur is not None:
        blocks.append("\n".join(cur)); cur = None
    elif cur is not None:
        cur.append(line)
for b in blocks:
    print(b.replace("\n", "\x1f"))
PY

n=0
while IFS= read -r block; do
  n=$((n + 1))
  script=$(printf '%s' "$block" | tr '\037' '\n')
  # Lines that need OpenSSL run only with it; the rest always.
  filtered=""
  while IFS= read -r line; do
    if [[ "$line" == openssl* ]] && [ $have_openssl = 0 ]; then
      skip=1
    elif [[ "$line" == *cryptopro* ]] && [ ! -d container.000 ]; then
      skip=1
    else
      skip=0
    fi
    if [ -n "${cont:-}" ]; then skip=$cont_skip; fi
    [[ "$line" == *\\ ]] && { cont=1; cont_skip=$skip; } || cont=""
    [ $skip = 1 ] && { echo "example $n: skipped: $line"; continue; }
    filtered+="$line"$'\n'
  done <<< "$script"
  echo "example $n:"
  printf '%s' "$filtered" | sed 's/^/  $ /'
  bash -euo pipefail -c "$filtered"
done < blocks.txt
[ $n -gt 0 ] || { echo "no examples found"; exit 1; }
echo "all README examples passed ($n blocks)"
