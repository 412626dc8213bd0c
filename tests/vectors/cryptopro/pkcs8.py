# Writes a GOST R 34.10-2001 private key as DER PKCS#8 for OpenSSL's engine.
import sys


def tlv(t, b):
    n = len(b)
    if n < 128:
        head = bytes([n])
    elif n < 256:
        head = bytes([0x81, n])
    else:
        head = bytes([0x82, n >> 8, n & 255])
    return bytes([t]) + head + b


def main():
    d = int(sys.argv[1], 16)
    curve = int(sys.argv[2])  # last arc of 1.2.643.2.2.35.x
    cp = bytes.fromhex('2A85030202')
    params = tlv(0x30, tlv(6, cp + bytes([0x23, curve])) + tlv(6, cp + b'\x1e\x01'))
    alg = tlv(0x30, tlv(6, cp + b'\x13') + params)
    db = d.to_bytes(32, 'big')
    if db[0] & 0x80:
        db = b'\0' + db
    sys.stdout.buffer.write(tlv(0x30, tlv(2, b'\0') + alg + tlv(4, tlv(2, db))))


if __name__ == '__main__':
    main()
