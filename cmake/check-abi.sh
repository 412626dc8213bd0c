#!/bin/sh
# Checks the binary interface of a built libKorvex.so against cmake/exports.txt:
#   - exactly the listed names are exported, functions as code and the twelve
#     constant/example objects as data;
#   - nothing is imported but the stack-protector failure routine and the
#     runtime's finaliser (and the weak hooks every toolchain adds);
#   - no C++ runtime is needed and no static constructor runs at load.
# Usage: check-abi.sh LIBRARY [EXPORT-LIST]
set -u
lib=${1:?usage: check-abi.sh LIBRARY [EXPORT-LIST]}
list=${2:-$(dirname "$0")/exports.txt}
[ -f "$lib" ] || { echo "check-abi: no such file: $lib"; exit 2; }
[ -f "$list" ] || { echo "check-abi: no export list: $list"; exit 2; }

data="Mat p_table p_test a_test q_test x_test y_test k_test zero_256_bit_ptr one_256_bit_ptr zero_512_bit_ptr one_512_bit_ptr"
weak="__stack_chk_fail __cxa_finalize _ITM_deregisterTMCloneTable _ITM_registerTMCloneTable __gmon_start__"
tmp=$(mktemp -d) || exit 2
trap 'rm -rf "$tmp"' EXIT
fail=0
say() { echo "$*"; fail=1; }

nm -D --defined-only "$lib" | awk '{print $3, $2}' | sort > "$tmp/defined"
cut -d' ' -f1 "$tmp/defined" | sort -u > "$tmp/have"
sort -u "$list" > "$tmp/want"
comm -13 "$tmp/want" "$tmp/have" | sed 's/^/  /' > "$tmp/extra"
comm -23 "$tmp/want" "$tmp/have" | sed 's/^/  /' > "$tmp/missing"
[ -s "$tmp/extra" ] && { say "exported but not in the list:"; cat "$tmp/extra"; }
[ -s "$tmp/missing" ] && { say "listed but not exported:"; cat "$tmp/missing"; }

while read -r name type; do
  case " $data " in
    *" $name "*) case "$type" in [DdRrBbVv]) ;; *) say "data object $name exported as '$type'";; esac ;;
    *) case "$type" in [TtWi]) ;; *) say "function $name exported as '$type'";; esac ;;
  esac
done < "$tmp/defined"

imports=$(nm -D --undefined-only "$lib" | awk '{print $NF}' | sed 's/@.*//' | sort -u)
for s in $imports; do
  case " $weak " in *" $s "*) ;; *) say "unexpected import: $s";; esac
done
readelf -d "$lib" | grep NEEDED | grep -E 'stdc\+\+|libgcc_s|libm\.' && say "needs a runtime library"
nm "$lib" 2>/dev/null | grep -q '_GLOBAL__sub_I' && say "has static constructors"

if [ $fail -eq 0 ]; then
  echo "check-abi: OK ($(wc -l < "$tmp/have") names; imports: $(echo $imports))"
else
  echo "check-abi: FAILED"
fi
exit $fail
