// Writers of the two fixed parts of the PKCS#12 container: the
// AuthenticatedSafe prologue and the SafeContents.
#include "containers/pkcs12_writer.h"

using namespace kx;
using namespace kx::p12;

KORVEX_API unsigned char pkcs12_create_auth_safe_hdr(unsigned char** pp, unsigned char* iv8, unsigned char* salt4) {
    Writer w{*pp};
    w.header(kTagSeq, 279);               // AuthenticatedSafe
    w.header(kTagSeq, 276);               // ContentInfo
    put_rsa_oid(w, 0x07, 0x06);           // encryptedData
    w.header(kTagSeq, 262);               // EncryptedData
    put_small_int(w, 0);
    w.header(kTagSeq, 256);               // EncryptedContentInfo
    put_rsa_oid(w, 0x07, 0x01);           // data
    w.header(kTagSeq, 88);                // contentEncryptionAlgorithm
    put_rsa_oid(w, 0x05, 0x0D);           // PBES2
    w.header(kTagSeq, 75);
    w.header(kTagSeq, 42);                // keyDerivationFunc
    put_rsa_oid(w, 0x05, 0x0C);           // PBKDF2
    w.header(kTagSeq, 29);
    put_octets(w, salt4, 4);
    put_count(w, kIterations);
    w.header(kTagSeq, 17);                // prf
    put_cp_oid(w, 0x0A);                  // HMAC GOST R 34.11-94
    put_cp_oid2(w, kSufHashParams);
    w.header(kTagSeq, 29);                // encryptionScheme
    put_cp_oid(w, 0x15);                  // GOST 28147-89
    w.header(kTagSeq, 19);
    put_octets(w, iv8, 8);
    put_cp_oid2(w, kSufCipherParams);
    w.header(kTagOctets, kPlainLen);      // encryptedContent
    *pp = w.p;
    return pkcs12_ber_code(nullptr, kPlainLen);// its length octets
}

KORVEX_API void pkcs12_create_safe_contents(unsigned char** pp, type_uN<32>* private_key, unsigned char* aux40) {
    Writer w{*pp};
    w.header(kTagSeq, 144);               // SafeContents
    w.header(kTagSeq, 81);                // key bag
    put_bag_oid(w, 0x01);
    w.header(kTagSeq, 67);                // PrivateKeyInfo
    put_small_int(w, 0);
    w.header(kTagSeq, 28);
    put_cp_oid(w, 0x13);                  // GOST R 34.10-2001
    w.header(kTagSeq, 18);
    put_cp_oid2(w, kSufCurveA);
    w.header(kTagOid, 7);                 // 1.2.643.2.2.30.1
    w.bytes(kStemCp, sizeof kStemCp);
    w.byte(0x1E);
    w.byte(0x01);
    put_octets(w, private_key->b, 32);
    w.header(kTagSeq, 59);                // second bag
    put_bag_oid(w, 0x05);
    w.header(kTagSeq, 45);
    put_small_int(w, 0);
    put_octets(w, aux40, kAuxLen);
    for (int i = 0; i < 5; ++i) w.byte(0x05);// padding to 152 octets
    *pp = w.p;
}
