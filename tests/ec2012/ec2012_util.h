// Helpers of the GOST R 34.10-2012 (512-bit) tests.
#ifndef KORVEX_TESTS_EC2012_UTIL_H
#define KORVEX_TESTS_EC2012_UTIL_H

#include <string>

#include "GOST_34_10_2012.h"
#include "common/test_util.h"
#include "gtest/gtest.h"

namespace ec2012 {

using U64 = type_uN<64>;
using U128 = type_uN<128>;

// Little-endian hex as stored in the fixtures (an empty string gives 0).
template <class V = U64>
inline V le(const std::string& hex) {
    kt::Bytes b = kt::from_hex(hex);
    V r{};
    for (size_t i = 0; i < b.size() && i < sizeof r.b; ++i) r.b[i] = b[i];
    return r;
}
inline U128 le128(const std::string& hex) { return le<U128>(hex); }

// A number written as in the standards: big-endian hex.
inline U64 be(const std::string& hex) { return le(kt::to_hex(kt::reversed(kt::from_hex(hex)))); }

inline U64 small(unsigned v) { return le(kt::to_hex(&v, sizeof v)); }

inline std::string hex(const U64& v) { return kt::to_hex(v.b, 64); }
inline std::string hex(const U128& v) { return kt::to_hex(v.b, 128); }
// Values joined, so that one comparison shows a whole point.
inline std::string pt(const U64& x, const U64& y) { return hex(x) + hex(y); }
inline std::string pt(const U64& X, const U64& Y, const U64& Z) { return hex(X) + hex(Y) + hex(Z); }

inline U128 join(const U64& x, const U64& y) { return le128(pt(x, y)); }
inline U64 half(const U128& v, int which) { return le(kt::to_hex(v.b + 64 * which, 64)); }

// The records of one kind ("op = ...") in ec2012/arith.txt.
inline std::vector<kt::Record> ops(const std::string& op) {
    std::vector<kt::Record> out;
    for (auto& r : kt::load_records("ec2012/arith.txt"))
        if (r["op"] == op) out.push_back(r);
    return out;
}


// OpenSSL's signature (s || r, each 64 bytes big-endian) in this library's
// exported layout: s as two separately reversed 32-byte halves, low half
// first, then r little-endian.
inline U128 from_openssl(const kt::Bytes& osl) {
    U128 r;
    for (int i = 0; i < 32; ++i) r.b[i] = osl[32 + i], r.b[32 + i] = osl[i];
    for (int i = 0; i < 64; ++i) r.b[64 + i] = osl[127 - i];
    return r;
}

struct Curve {
    U64 p, a, q, x, y;
};

// The published values, written independently of the library's tables.
inline Curve curve(int set) {
    if (set == 1)
        return {be("FFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFF"
                   "FFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFDC7"),
                be("FFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFF"
                   "FFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFDC4"),
                be("FFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFF"
                   "27E69532F48D89116FF22B8D4E0560609B4B38ABFAD2B85DCACDB1411F10B275"),
                small(3),
                be("7503CFE87A836AE3A61B8816E25450E6CE5E1C93ACF1ABC1778064FDCBEFA921"
                   "DF1626BE4FD036E93D75E6A50E3A41E98028FE5FC235F5B889A589CB5215F2A4")};
    if (set == 2)
        return {be("8000000000000000000000000000000000000000000000000000000000000000"
                   "000000000000000000000000000000000000000000000000000000000000006F"),
                be("8000000000000000000000000000000000000000000000000000000000000000"
                   "000000000000000000000000000000000000000000000000000000000000006C"),
                be("8000000000000000000000000000000000000000000000000000000000000001"
                   "49A1EC142565A545ACFDB77BD9D40CFA8B996712101BEA0EC6346C54374F25BD"),
                small(2),
                be("1A8F7EDA389B094C2C071E3647A8940F3C123B697578C213BE6DD9E6C8EC7335"
                   "DCB228FD1EDF4A39152CBCAAF8C0398828041055F94CEEEC7E21340780FE41BD")};
    // GOST R 34.10-2012, appendix A.2.
    return {be("4531ACD1FE0023C7550D267B6B2FEE80922B14B2FFB90F04D4EB7C09B5D2D15D"
               "F1D852741AF4704A0458047E80E4546D35B8336FAC224DD81664BBF528BE6373"),
            small(7),
            be("4531ACD1FE0023C7550D267B6B2FEE80922B14B2FFB90F04D4EB7C09B5D2D15D"
               "A82F2D7ECB1DBAC719905C5EECC423F1D86E25EDBE23C595D644AAF187E6E6DF"),
            be("24D19CC64572EE30F396BF6EBBFD7A6C5213B3B3D7057CC825F91093A68CD762"
               "FD60611262CD838DC6B60AA7EEE804E28BC849977FAC33B4B530F1B120248A9A"),
            be("2BB312A43BD2CE6E0D020613C857ACDDCFBF061E91E5F2C3F32447C259F39B2C"
               "83AB156D77F1496BF7EB3351E1EE4E43DC1A18B91B24640B6DBB92CB1ADD371E")};
}

}  // namespace ec2012

#endif
