# Plain Python GOST primitives for the test data generators, written from the
# standards (GOST 28147-89, GOST R 34.11-94, RFC 4357, RFC 7836) and checked
# against OpenSSL's GOST engine in generate.sh. Slow and simple on purpose.

SBOX_CRYPTOPRO_A = [  # id-Gost28147-89-CryptoPro-A-ParamSet, K1..K8
    [9, 6, 3, 2, 8, 11, 1, 7, 10, 4, 14, 15, 12, 0, 13, 5],
    [3, 7, 14, 9, 8, 10, 15, 0, 5, 2, 6, 12, 11, 4, 13, 1],
    [14, 4, 6, 2, 11, 3, 13, 8, 12, 15, 5, 10, 0, 7, 1, 9],
    [14, 7, 10, 12, 13, 1, 3, 9, 0, 2, 11, 4, 15, 8, 5, 6],
    [11, 5, 1, 9, 8, 13, 15, 0, 14, 4, 2, 3, 12, 7, 10, 6],
    [3, 10, 13, 12, 1, 2, 0, 11, 7, 5, 9, 4, 8, 15, 14, 6],
    [1, 13, 2, 9, 7, 10, 6, 0, 8, 12, 4, 5, 15, 3, 11, 14],
    [11, 10, 15, 5, 0, 12, 14, 8, 6, 2, 3, 9, 1, 7, 13, 4],
]
SBOX_HASH_CRYPTOPRO = [  # id-GostR3411-94-CryptoProParamSet
    [10, 4, 5, 6, 8, 1, 3, 7, 13, 12, 14, 0, 9, 2, 11, 15],
    [5, 15, 4, 0, 2, 13, 11, 9, 1, 7, 6, 3, 12, 14, 10, 8],
    [7, 15, 12, 14, 9, 4, 1, 0, 3, 11, 5, 2, 6, 10, 8, 13],
    [4, 10, 7, 12, 0, 15, 2, 8, 14, 1, 6, 5, 13, 11, 9, 3],
    [7, 6, 4, 11, 9, 12, 2, 10, 1, 8, 0, 14, 15, 13, 3, 5],
    [7, 6, 2, 4, 13, 9, 15, 0, 10, 1, 5, 11, 8, 14, 12, 3],
    [13, 14, 4, 1, 7, 0, 5, 10, 3, 12, 8, 15, 6, 2, 9, 11],
    [1, 3, 10, 9, 5, 11, 4, 15, 8, 6, 7, 14, 13, 0, 2, 12],
]
SBOX_Z = [  # id-tc26-gost-28147-param-Z
    [12, 4, 6, 2, 10, 5, 11, 9, 14, 8, 13, 7, 0, 3, 15, 1],
    [6, 8, 2, 3, 9, 10, 5, 12, 1, 14, 4, 7, 11, 13, 0, 15],
    [11, 3, 5, 8, 2, 15, 10, 13, 14, 1, 7, 4, 12, 9, 6, 0],
    [12, 8, 2, 1, 13, 4, 15, 6, 7, 0, 10, 5, 3, 14, 9, 11],
    [7, 15, 5, 10, 8, 1, 6, 13, 0, 9, 3, 14, 11, 4, 2, 12],
    [5, 13, 15, 6, 9, 2, 12, 10, 11, 7, 8, 1, 4, 3, 14, 0],
    [8, 14, 2, 5, 6, 9, 1, 12, 15, 4, 11, 0, 13, 10, 3, 7],
    [1, 7, 14, 13, 0, 5, 8, 3, 4, 15, 10, 6, 9, 12, 11, 2],
]
M32 = 0xFFFFFFFF


def _f(x, sbox):
    y = 0
    for k in range(8):
        y |= sbox[k][(x >> (4 * k)) & 15] << (4 * k)
    return ((y << 11) | (y >> 21)) & M32


def _subkeys(key):
    return [int.from_bytes(key[4 * i:4 * i + 4], 'little') for i in range(8)]


def _rounds(block, order, sbox, final_swap):
    n1 = int.from_bytes(block[:4], 'little')
    n2 = int.from_bytes(block[4:8], 'little')
    for k in order:
        n1, n2 = _f((n1 + k) & M32, sbox) ^ n2, n1
    if final_swap:  # the last round of the 32-step cycles does not exchange
        n1, n2 = n2, n1
    return n1.to_bytes(4, 'little') + n2.to_bytes(4, 'little')


def encrypt_block(key, block, sbox):
    k = _subkeys(key)
    return _rounds(block, k * 3 + k[::-1], sbox, True)


def decrypt_block(key, block, sbox):
    k = _subkeys(key)
    return _rounds(block, k + k[::-1] * 3, sbox, True)


def ecb_encrypt(key, data, sbox):
    return b''.join(encrypt_block(key, data[i:i + 8], sbox) for i in range(0, len(data), 8))


def ecb_decrypt(key, data, sbox):
    return b''.join(decrypt_block(key, data[i:i + 8], sbox) for i in range(0, len(data), 8))


def mac(key, data, sbox, iv=bytes(8)):
    """Full 64-bit GOST 28147-89 MAC value (16-step cycle), zero-padded tail."""
    k = _subkeys(key)
    a = iv
    for i in range(0, len(data), 8):
        blk = data[i:i + 8].ljust(8, b'\0')
        a = _rounds(bytes(x ^ y for x, y in zip(a, blk)), k * 2, sbox, False)
    return a


def ctr(key, iv, data, sbox):
    s = encrypt_block(key, iv, sbox)
    n1 = int.from_bytes(s[:4], 'little')
    n2 = int.from_bytes(s[4:], 'little')
    out = bytearray()
    for i in range(0, len(data), 8):
        n1 = (n1 + 0x01010101) & M32
        n2 = n2 + 0x01010104
        if n2 > M32:
            n2 -= M32  # addition modulo 2^32 - 1
        g = encrypt_block(key, n1.to_bytes(4, 'little') + n2.to_bytes(4, 'little'), sbox)
        out += bytes(x ^ y for x, y in zip(data[i:i + 8], g))
    return bytes(out)


# ---- GOST R 34.11-94 (zero starting vector, CryptoPro hash S-box) ----

_C3 = bytes.fromhex('00FF00FF00FF00FF FF00FF00FF00FF00 00FFFF00FF0000FF FF000000FFFF00FF'.replace(' ', ''))


def _A(y):
    y1, y2 = y[0:8], y[8:16]
    return y[8:32] + bytes(a ^ b for a, b in zip(y1, y2))


def _P(y):
    return bytes(y[8 * i + k] for k in range(8) for i in range(4))


def _psi(y):
    w = [y[2 * i] | y[2 * i + 1] << 8 for i in range(16)]
    n = w[0] ^ w[1] ^ w[2] ^ w[3] ^ w[12] ^ w[15]
    w = w[1:] + [n]
    return b''.join(x.to_bytes(2, 'little') for x in w)


def _xor(a, b):
    return bytes(x ^ y for x, y in zip(a, b))


def _step(h, m):
    u, v = h, m
    keys = [_P(_xor(u, v))]
    for j in range(1, 4):
        u = _A(u)
        if j == 2:
            u = _xor(u, _C3)
        v = _A(_A(v))
        keys.append(_P(_xor(u, v)))
    s = b''.join(encrypt_block(keys[i], h[8 * i:8 * i + 8], SBOX_HASH_CRYPTOPRO) for i in range(4))
    for _ in range(12):
        s = _psi(s)
    s = _psi(_xor(m, s))
    s = _xor(h, s)
    for _ in range(61):
        s = _psi(s)
    return s


def hash94(data):
    h = bytes(32)
    sigma = 0
    bits = 0
    for i in range(0, len(data), 32):
        blk = data[i:i + 32]
        bits += 8 * len(blk)
        blk = blk.ljust(32, b'\0')
        sigma = (sigma + int.from_bytes(blk, 'little')) % (1 << 256)
        h = _step(h, blk)
    h = _step(h, bits.to_bytes(32, 'little'))
    return _step(h, sigma.to_bytes(32, 'little'))


def hmac94(key, data):
    k = key if len(key) <= 32 else hash94(key)
    k = k.ljust(32, b'\0')
    inner = hash94(bytes(b ^ 0x36 for b in k) + data)
    return hash94(bytes(b ^ 0x5C for b in k) + inner)


def pbkdf2_94(password, salt4, iterations):
    u = hmac94(password, salt4[:4] + b'\0\0\0\1')
    t = u
    for _ in range(iterations - 1):
        u = hmac94(password, u)
        t = _xor(t, u)
    return t
