// Writers of the two fixed parts of the PKCS#12 container: the
// AuthenticatedSafe prologue and the SafeContents.
#include "containers/pkcs12_writer.h"

using namespace kx::p12;

KORVEX_API unsigned char pkcs12_create_auth_safe_hdr(unsigned char** pp, unsigned char* iv8, unsigned char* salt4) {
    unsigned char*& p = *pp;
    put_header(p, 0x30, 279);             // AuthenticatedSafe
    put_header(p, 0x30, 276);             // ContentInfo
    put_rsa_oid(p, 0x07, 0x06);           // encryptedData
    put_header(p, 0x30, 262);             // EncryptedData
    put_small_int(p, 0);
    put_header(p, 0x30, 256);             // EncryptedContentInfo
    put_rsa_oid(p, 0x07, 0x01);           // data
    put_header(p, 0x30, 88);              // contentEncryptionAlgorithm
    put_rsa_oid(p, 0x05, 0x0D);           // PBES2
    put_header(p, 0x30, 75);
    put_header(p, 0x30, 42);              // keyDerivationFunc
    put_rsa_oid(p, 0x05, 0x0C);           // PBKDF2
    put_header(p, 0x30, 29);
    put_octets(p, salt4, 4);
    put_count(p, kIterations);
    put_header(p, 0x30, 17);              // prf
    put_cp_oid(p, 0x0A);                  // HMAC GOST R 34.11-94
    put_cp_oid2(p, kSufHashParams);
    put_header(p, 0x30, 29);              // encryptionScheme
    put_cp_oid(p, 0x15);                  // GOST 28147-89
    put_header(p, 0x30, 19);
    put_octets(p, iv8, 8);
    put_cp_oid2(p, kSufCipherParams);
    put(p, 0x04);                         // encryptedContent
    return pkcs12_ber_code(&p, kPlainLen);
}

KORVEX_API void pkcs12_create_safe_contents(unsigned char** pp, type_uN<32>* private_key, unsigned char* aux40) {
    unsigned char*& p = *pp;
    put_header(p, 0x30, 144);             // SafeContents
    put_header(p, 0x30, 81);              // key bag
    put_bag_oid(p, 0x01);
    put_header(p, 0x30, 67);              // PrivateKeyInfo
    put_small_int(p, 0);
    put_header(p, 0x30, 28);
    put_cp_oid(p, 0x13);                  // GOST R 34.10-2001
    put_header(p, 0x30, 18);
    put_cp_oid2(p, kSufCurveA);
    put_header(p, 0x06, 7);               // 1.2.643.2.2.30.1
    put_bytes(p, kStemCp, sizeof kStemCp);
    put(p, 0x1E);
    put(p, 0x01);
    put_octets(p, private_key->b, 32);
    put_header(p, 0x30, 59);              // second bag
    put_bag_oid(p, 0x05);
    put_header(p, 0x30, 45);
    put_small_int(p, 0);
    put_octets(p, aux40, kAuxLen);
    for (int i = 0; i < 5; ++i) put(p, 0x05);  // padding to 152 octets
}
