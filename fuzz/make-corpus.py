#!/usr/bin/env python3
# Writes the seed corpora of the CMS, PKCS#15, PKCS#12, CryptoPro and program
# targets from the committed vectors (tests/vectors) and the real CryptoPro
# samples (../shared/samples), each seed prefixed with the octets its target
# reads first. Sources are listed in corpus/SOURCES.txt.
import glob, os, re, sys

root = os.path.join(os.path.dirname(os.path.abspath(__file__)), '..')
vec = os.path.join(root, 'tests', 'vectors')
samples = os.path.join(root, '..', 'shared', 'samples', 'cryptopro')
out = os.path.join(root, 'fuzz', 'corpus')


def put(target, name, data):
    os.makedirs(os.path.join(out, target), exist_ok=True)
    with open(os.path.join(out, target, name), 'wb') as f:
        f.write(bytes(data))


def records(path):
    recs, cur = [], {}
    for line in open(path):
        m = re.match(r'(\w+) = ?(.*)', line.strip())
        if not m:
            continue
        if m.group(1) == 'name' and cur:
            recs.append(cur)
            cur = {}
        cur[m.group(1)] = m.group(2)
    if cur:
        recs.append(cur)
    return recs


def rd(p):
    return open(p, 'rb').read()


def small(p, limit=4096):
    return os.path.getsize(p) <= limit


# CMS messages (0x00) and attribute texts (0x01, signed NUL unsigned).
cms = sorted(glob.glob(os.path.join(vec, 'pki', '*.der')) + glob.glob(os.path.join(vec, 'cms', '*.der')))
for p in cms:
    d = rd(p)
    if small(p) and d[:1] == b'\x30' and ('cms' in p or 'korvex_' in p or 'ossl' in p or 'altered' in p or 'shortkey' in p):
        put('cms', os.path.basename(p), b'\x00' + d)
        put('cms', 'check_' + os.path.basename(p), b'\x02' + d)
        put('tools', 'cms_' + os.path.basename(p), b'\x01\x00' + d)
put('cms', 'attrs.txt', b'\x03' + b'1.2.840.113549.1.9.3:BgkqhkiG9w0BBwE=&1.2.643.2.2.9:BAQBAgME'
    + b'\x00' + b'1.2.840.113549.1.9.5:Fw0yNjAxMDEwMDAwMDBa')
put('cms', 'attrs_digest.txt', b'\x01' + b'1.2.840.113549.1.9.4:BCAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAA&1.2.3:AAAA')

# PKCS#15: selector (password length, readers, renewal), password, container.
for r in records(os.path.join(vec, 'pkcs15', 'samples.txt')):
    pw, c = bytes.fromhex(r['password']), bytes.fromhex(r['container'])
    put('pkcs15', r['name'], bytes([len(pw) | 0x70]) + pw + c)
    put('pkcs15', r['name'] + '_getters', bytes([len(pw)]) + pw + c)
    put('tools', 'pkcs15_' + r['name'], bytes([4, len(pw)]) + pw + c)

# PKCS#12: selector (password length, author's mode), password, container;
# the author's mode takes octets 153..304 as plaintext: the SafeContents of
# tests/vectors/pkcs12/make_containers.py.
sys.path[:0] = [os.path.join(vec, 'pkcs12'), os.path.join(vec, 'cryptopro')]
from make_containers import safe_contents
for r in records(os.path.join(vec, 'pkcs12', 'pkcs12.txt')):
    pw, c = bytes.fromhex(r.get('password', '')), bytes.fromhex(r['container'])
    if len(pw) > 15 or len(c) != 372:
        continue
    plain = c[:153] + safe_contents(bytes.fromhex(r['key']), bytes.fromhex(r['aux'])) + c[305:]
    put('pkcs12', r['name'], bytes([len(pw) | 0x10]) + pw + plain)
    put('pkcs12', r['name'] + '_as_made', bytes([len(pw)]) + pw + c)
    put('tools', 'pkcs12_' + r['name'], bytes([5, len(pw)]) + pw + c)

# CryptoPro (library): selector, password length, password, primary, masks,
# header file 30 { 30 { [5] certificate } } around the vectors' certificates
# (cert_d1_A holds the containers' key); the real samples' folders as they are.
def tlv(tag, body):
    n = len(body)
    return bytes([tag]) + (bytes([n]) if n < 128 else bytes([0x82, n >> 8, n & 255])) + body


headers = [tlv(0x30, tlv(0x30, tlv(0x85, rd(os.path.join(vec, 'cryptopro', c + '.der')))))
           for c in ('cert_d1_A', 'cert_d1_A', 'cert_d1_B', 'cert_d2_A')]
for i, r in enumerate(records(os.path.join(vec, 'cryptopro', 'cryptopro.txt'))):
    pw, pr, m = bytes.fromhex(r.get('password', '')), bytes.fromhex(r['primary']), bytes.fromhex(r['masks'])
    sel = (1 if len(pr) == 70 else 0) | (2 if 'param_z' in r['name'] else 0) | (0x10 if pw else 0)
    put('cryptopro', r['name'], bytes([sel, len(pw)]) + pw + pr + m + headers[i % len(headers)])
for p in sorted(glob.glob(os.path.join(samples, '*', '*.000'))):
    f = {n: rd(os.path.join(p, n + '.key')) for n in ('header', 'primary', 'masks')}
    name = os.path.basename(os.path.dirname(p)) + '_' + os.path.basename(p)
    if len(f['primary']) in (36, 70) and len(f['masks']) == 56:
        put('cryptopro', name, bytes([0x10 | (1 if len(f['primary']) == 70 else 0), 1]) + b'1'
            + f['primary'] + f['masks'] + f['header'])
    put('tools', 'cryptopro_' + name, bytes([6, 1]) + b'1' + len(f['primary']).to_bytes(2, 'big') + f['primary']
        + len(f['masks']).to_bytes(2, 'big') + f['masks'] + f['header'])

# Program: certificates (0), PFX (2), PKCS#8 (3).
for p in sorted(glob.glob(os.path.join(vec, 'pki', 'leaf_*.der')) + glob.glob(os.path.join(vec, 'cms', '*.crt'))
                + glob.glob(os.path.join(vec, 'cryptopro', 'cert_*.der'))):
    put('tools', 'cert_' + os.path.basename(p), b'\x00\x00' + rd(p))
for p, pw in [('ossl-g2001.pfx', b'Test123'), ('ossl-rc2.pfx', b''), ('pfx1.pfx', b'12345')]:
    if os.path.exists(os.path.join(vec, 'formats', p)):
        put('tools', 'pfx_' + p, bytes([2, len(pw)]) + pw + rd(os.path.join(vec, 'formats', p)))
for p in sorted(glob.glob(os.path.join(vec, 'formats', '*.key.pem')))[:4]:
    put('tools', 'pkcs8_' + os.path.basename(p), b'\x03\x00' + rd(p))
