#!/bin/bash
# Sample PKCS#15 containers checked against peers. Builds make_samples.cpp
# against a built libKorvex.so (BUILD, default ../../../build-pkcs15), writes
# the containers, and records for each:
#   - whether `openssl asn1parse -inform DER` walks it completely (valid DER,
#     all lengths consistent), with its output in <name>.asn1.txt;
#   - the KEK computed by OpenSSL's PBKDF2 (gostprov provider) from the
#     password and the first four salt octets (the container's own rule);
#   - the GOST R 34.11-94 / 34.11-2012-512 digest of the encapsulated token;
#   - the HMAC of the authenticated attributes under the MAC key, taken with
#     the first octet 0x82 (as the library seals them) and as stored (0xA2).
# The MAC key itself is unwrapped by the test, not here.
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
root=$(cd "$here/../../.." && pwd)
build=${BUILD:-$root/build-pkcs15}
tmp=$(mktemp -d)
trap 'rm -rf "$tmp"' EXIT

g++ -std=c++17 -O1 -I"$root/include" "$here/make_samples.cpp" -L"$build" -lKorvex -Wl,-rpath,"$build" -o "$tmp/make_samples"
"$tmp/make_samples" "$tmp" > "$tmp/records.txt"

python3 - "$here" "$tmp" <<'PY'
import subprocess, sys, os
here, tmp = sys.argv[1], sys.argv[2]

def der(b, at):
    tag, l = b[at], b[at + 1]
    if l < 0x80:
        return tag, at + 2, l
    n = l & 0x7F
    return tag, at + 2 + n, int.from_bytes(b[at + 2:at + 2 + n], 'big')

def children(b, at):
    tag, v, l = der(b, at)
    out, p = [], v
    while p < v + l:
        out.append(p)
        t, vv, ll = der(b, p)
        p = vv + ll
    return out

def ossl(args, data=None):
    r = subprocess.run(['openssl'] + args, input=data, capture_output=True)
    return r.returncode, r.stdout.decode(errors='replace'), r.stderr.decode(errors='replace')

recs = [dict(l.split(' = ', 1) for l in block.splitlines()) for block in open(os.path.join(tmp, 'records.txt')).read().strip().split('\n\n')]
out = ['# Sample PKCS#15 containers with peer results; written by generate.sh.', '']
for r in recs:
    name = r['name']
    b = open(os.path.join(tmp, name + '.der'), 'rb').read()
    g2012 = r['function'] == '2'
    # AuthenticatedData: version, recipients, macAlg, digestAlg, content, attrs, mac
    top = children(b, 0)
    content = top[4]
    os_at = children(b, children(b, content)[1])[0]
    _, tv, tl = der(b, os_at)

    def parses(extra, size):
        # asn1parse must walk to the last octet without an error.
        rc, so, se = ossl(['asn1parse', '-inform', 'DER', '-in', os.path.join(tmp, name + '.der')] + extra)
        last = so.strip().splitlines()[-1]
        off = int(last.split(':')[0]); hl = int(last.split('hl=')[1].split()[0]); ln = int(last.split(' l=')[1].split()[0])
        return rc == 0 and 'error' not in (so + se).lower() and off + hl + ln == size, so

    complete, so = parses([], len(b))
    # The token inside the encapsulated OCTET STRING, walked on its own.
    token_complete, so2 = parses(['-strparse', str(os_at)], tl)
    open(os.path.join(here, name + '.asn1.txt'), 'w').write(so + '\n# token (-strparse %d)\n' % os_at + so2)
    complete = complete and token_complete
    token = b[tv:tv + tl]
    t, av, al = der(b, top[5]); attrs = b[top[5]:av + al]
    # Salt: token { version, [0] { SEQ { keyid, [0] { SEQ { OID, SEQ { salt ...
    tok = children(b, tv)
    kmi = children(b, tok[1])[0]
    pb = children(b, children(b, children(b, kmi)[1])[0])[1]
    salt_at = children(b, pb)[0]
    _, sv, _ = der(b, salt_at)
    salt = b[sv:sv + 32]
    md = 'md_gost12_512' if g2012 else 'md_gost94'
    prov = ['-provider', 'gostprov', '-provider', 'default']
    rc2, kek, e2 = ossl(['kdf'] + prov + ['-keylen', '32', '-kdfopt', 'digest:' + md, '-kdfopt', 'hexpass:' + r['password'],
                         '-kdfopt', 'hexsalt:' + salt[:4].hex(), '-kdfopt', 'iter:2000', 'PBKDF2'])
    kek = kek.strip().replace(':', '').lower()
    rc3, dg, e3 = ossl(['dgst'] + prov + ['-' + md, '-r'], token)
    dg = dg.split()[0]
    rec = dict(r)
    rec.update({'container': b.hex(), 'asn1parse': 'complete' if complete else 'FAILED',
                'peer_kek': kek, 'peer_digest': dg, 'attrs': attrs.hex()})
    for k in ['name', 'function', 'usage', 'kind', 'seed', 'password', 'key', 'rnd', 'asn1parse', 'peer_kek', 'peer_digest', 'attrs', 'container']:
        out.append('%s = %s' % (k, rec[k]))
    out.append('')
    print(name, len(b), 'octets, asn1parse', rec['asn1parse'], file=sys.stderr)
open(os.path.join(here, 'samples.txt'), 'w').write('\n'.join(out))
PY
