#!/usr/bin/env bash
# Builds make_messages against a built libKorvex.so, writes messages signed by
# the library and records whether `openssl cms -verify -engine gost` accepts
# them (interop.txt). Usage: interop.sh BUILD_DIR (holding libKorvex.so).
set -uo pipefail
here=$(cd "$(dirname "$0")" && pwd)
build=$(cd "${1:?usage: interop.sh BUILD_DIR}" && pwd)
root=$(cd "$here/../../.." && pwd)
work=$(mktemp -d); trap 'rm -rf "$work"' EXIT
g++ -std=c++17 -O1 -I"$root/include" "$here/make_messages.cpp" -L"$build" -lKorvex -Wl,-rpath,"$build" \
    -o "$work/make_messages" || exit 1

key() { awk -v n="$1" '$1=="name"{c=($3==n)} c&&$1=="private"{print $3}' "$here/certs.txt"; }
openssl x509 -inform DER -in "$here/ca_a.der" -out "$work/ca_a.pem"
openssl x509 -inform DER -in "$here/leaf_xa.der" -out "$work/leaf_xa.pem"
rm -f "$here"/korvex_*.der
"$work/make_messages" "$here" "$here/ca_a.der" "$(key ca_a)" ca_a > "$work/list" || exit 1
"$work/make_messages" "$here" "$here/leaf_xa.der" "$(key leaf_xa)" leaf_xa >> "$work/list" || exit 1

{
    echo "# openssl cms -verify -engine gost -binary -inform DER -CAfile ca_a.pem"
    echo "# (-content for detached, -certfile with the signer for messages without it)"
    echo "# $(openssl version)"
    while read -r msg; do
        name=$(basename "$msg" .der)
        signer=ca_a; [[ $name == *leaf_xa* ]] && signer=leaf_xa
        args=(-verify -engine gost -binary -inform DER -in "$msg" -CAfile "$work/ca_a.pem" -out "$work/out")
        [[ $name == *detached* ]] && args+=(-content "$here/interop_content.bin")
        [[ $name == *nocert* ]] && args+=(-certfile "$work/$signer.pem")
        if openssl cms "${args[@]}" >"$work/log" 2>&1 && cmp -s "$work/out" "$here/interop_content.bin"; then
            result="verified"
        else
            result="rejected: $(grep -v '^Engine' "$work/log" | tr '\n' ' ' | cut -c1-200)"
        fi
        echo
        echo "name = $name"
        echo "openssl = $result"
    done < "$work/list"
} > "$here/interop.txt"
cat "$here/interop.txt"
