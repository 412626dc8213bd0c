#!/bin/bash
# Sample PKCS#15 containers checked against peers. Builds make_samples.cpp
# against a built libKorvex.so (BUILD, default build/ of the repo), writes
# the containers, and records for each:
#   - whether `openssl asn1parse -inform DER` walks it completely (valid DER,
#     all lengths consistent), with its output in <name>.asn1.txt;
#   - the KEK computed by OpenSSL's PBKDF2 (gostprov provider) from the
#     password and the first four salt octets (the container's own rule);
#   - the GOST R 34.11-94 / 34.11-2012-512 digest of the encapsulated token;
#   - the key and the random value opened by OpenSSL alone: CEK unwrapped
#     by GOST 28147-89 ECB under that KEK, content decrypted in CFB;
#   - the HMAC of the authenticated attributes, with their first octet taken
#     as 0x82, under the MAC key unwrapped the same way;
#   - the RFC 4357 key-wrap MAC of each wrapped key (random object CEK, key
#     object CEK, MAC key) by OpenSSL's GOST 28147-89 MAC (gost-mac for
#     CryptoPro-A, gost-mac-12 for param-Z): that MAC has no IV, so the UKM
#     is XORed into the first block, which is the same thing.
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
root=$(cd "$here/../../.." && pwd)
build=${BUILD:-$root/build}
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

def value(b, at):
    _, v, l = der(b, at)
    return b[v:v + l]

PARAMS = {False: 'id-Gost28147-89-CryptoPro-A-ParamSet', True: 'id-tc26-gost-28147-param-Z'}

def cipher(args, data, g2012):
    # GOST 28147-89 through the gostprov provider, parameter set by CRYPT_PARAMS.
    env = dict(os.environ, CRYPT_PARAMS=PARAMS[g2012])
    r = subprocess.run(['openssl', args[0], '-provider', 'gostprov', '-provider', 'default'] + args[1:],
                       input=data, capture_output=True, env=env, check=True)
    return r.stdout

def ecb_decrypt(key, data, g2012):
    # ECB block by block as one-block CBC with a zero IV.
    return b''.join(cipher(['enc', '-d', '-gost89-cbc', '-K', key.hex(), '-iv', '00' * 8, '-nopad'],
                           data[i:i + 8], g2012) for i in range(0, len(data), 8))

def wrap_mac(kek, ukm, key, g2012):
    data = bytes(x ^ y for x, y in zip(key[:8], ukm)) + key[8:]
    env = dict(os.environ, CRYPT_PARAMS=PARAMS[g2012])
    r = subprocess.run(['openssl', 'mac', '-provider', 'gostprov', '-provider', 'default', '-macopt',
                        'hexkey:' + kek.hex(), '-macopt', 'size:4', 'gost-mac-12' if g2012 else 'gost-mac'],
                       input=data, capture_output=True, env=env, check=True)
    return r.stdout.strip().decode().lower()

def recipient(b, set_at):
    # SET { [2] { 4, kekid, alg { OID, params { OID, UKM } }, OCTET STRING { SEQ { enc, mac } } } }
    kekri = children(b, children(b, set_at)[0])
    ukm = value(b, children(b, children(b, kekri[2])[1])[1])
    enc, mac = children(b, children(b, kekri[3])[0])
    return ukm, value(b, enc), value(b, mac)

def open_object(b, a2_at, kek, g2012):
    # A2 { version 2, recipient SET, encrypted content info { id-data, alg { OID, { IV, set } }, [0] } }
    version, rset, info = children(b, a2_at)
    ukm, enc, mac = recipient(b, rset)
    cek = ecb_decrypt(kek, enc, g2012)
    _, alg, content = children(b, info)
    iv = value(b, children(b, children(b, alg)[1])[0])
    plain = cipher(['enc', '-d', '-gost89', '-K', cek.hex(), '-iv', iv.hex(), '-nopad'], value(b, content), g2012)
    _, v, l = der(plain, 0)
    return plain[v:v + l], wrap_mac(kek, ukm, cek, g2012)

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
    # Open both objects and check the AuthenticatedData MAC with OpenSSL alone.
    kek_b = bytes.fromhex(kek)
    objects = children(b, tok[2])
    rnd_a1 = children(b, children(b, children(b, objects[0])[0])[0])[-1]
    key_a1 = children(b, children(b, children(b, objects[1])[0])[0])[-1]
    peer_rnd, rnd_mac = open_object(b, children(b, rnd_a1)[0], kek_b, g2012)
    peer_key, key_mac = open_object(b, children(b, key_a1)[0], kek_b, g2012)
    ukm, enc, mac = recipient(b, top[1])
    mac_key = ecb_decrypt(kek_b, enc, g2012)
    wrap_macs = rnd_mac + key_mac + wrap_mac(kek_b, ukm, mac_key, g2012)
    sealed = bytes([0x82]) + attrs[1:]
    rc4, hm, e4 = ossl(['dgst'] + prov + ['-' + md, '-mac', 'hmac', '-macopt', 'hexkey:' + mac_key.hex(), '-r'], sealed)
    rec = dict(r)
    rec.update({'peer_key': peer_key.hex(), 'peer_rnd': peer_rnd.hex(), 'peer_hmac_82': hm.split()[0],
                'peer_wrap_macs': wrap_macs,
                'stored_mac': value(b, top[6]).hex()})
    rec.update({'container': b.hex(), 'asn1parse': 'complete' if complete else 'FAILED',
                'peer_kek': kek, 'peer_digest': dg, 'attrs': attrs.hex()})
    for k in ['name', 'function', 'usage', 'kind', 'seed', 'password', 'key', 'rnd', 'asn1parse', 'peer_kek',
              'peer_digest', 'peer_key', 'peer_rnd', 'peer_hmac_82', 'peer_wrap_macs', 'stored_mac', 'attrs',
              'container']:
        out.append('%s = %s' % (k, rec[k]))
    out.append('')
    print(name, len(b), 'octets, asn1parse', rec['asn1parse'], '| peer opens key', rec['peer_key'] == r['key'],
          'rnd', rec['peer_rnd'] == r['rnd'], '| peer HMAC (0x82)', rec['peer_hmac_82'] == rec['stored_mac'], file=sys.stderr)
open(os.path.join(here, 'samples.txt'), 'w').write('\n'.join(out))
PY
