#include "formats/modq.h"

#include <cstdint>
#include <cstring>

#include "formats/pkcs8.h"

namespace formats {

namespace {

using u64 = std::uint64_t;
using u128 = unsigned __int128;

// Group orders, big-endian hex (RFC 4357, RFC 7836, GOST R 34.10 examples).
struct Order {
    const char* oids[3];
    const char* q;
};
const Order kOrders[] = {
    {{"1.2.643.2.2.35.1", "1.2.643.2.2.36.0", "1.2.643.7.1.2.1.1.2"},
     "FFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFF6C611070995AD10045841B09B761B893"},
    {{"1.2.643.2.2.35.2", "1.2.643.7.1.2.1.1.3", nullptr},
     "800000000000000000000000000000015F700CFFF1A624E5E497161BCC8A198F"},
    {{"1.2.643.2.2.35.3", "1.2.643.2.2.36.1", "1.2.643.7.1.2.1.1.4"},
     "9B9F605F5A858107AB1EC85E6B41C8AA582CA3511EDDFB74F02F3A6598980BB9"},
    {{"1.2.643.2.2.35.0", nullptr, nullptr}, "8000000000000000000000000000000150FE8A1892976154C59CFC193ACCF5B3"},
    {{"1.2.643.7.1.2.1.2.1", nullptr, nullptr},
     "FFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFF"
     "27E69532F48D89116FF22B8D4E0560609B4B38ABFAD2B85DCACDB1411F10B275"},
    {{"1.2.643.7.1.2.1.2.2", nullptr, nullptr},
     "8000000000000000000000000000000000000000000000000000000000000001"
     "49A1EC142565A545ACFDB77BD9D40CFA8B996712101BEA0EC6346C54374F25BD"},
    {{"1.2.643.7.1.2.1.2.0", nullptr, nullptr},
     "4531ACD1FE0023C7550D267B6B2FEE80922B14B2FFB90F04D4EB7C09B5D2D15D"
     "A82F2D7ECB1DBAC719905C5EECC423F1D86E25EDBE23C595D644AAF187E6E6DF"},
};

template <size_t N>
struct Mont {
    u64 q[N], r2[N], one[N];  // one: R mod q, the Montgomery form of 1
    u64 qinv;                 // -q^-1 mod 2^64

    explicit Mont(const Bytes& q_le) {
        load(q, q_le.data());
        u64 inv = 1;
        for (int i = 0; i < 6; ++i) inv *= 2 - q[0] * inv;  // Newton: q * inv = 1 mod 2^64
        qinv = 0 - inv;
        // R^2 mod q by doubling 1 (2 * 64N times): public values only.
        u64 r[N] = {1};
        for (size_t i = 0; i < 2 * 64 * N; ++i) double_mod(r);
        std::memcpy(r2, r, sizeof r);
        u64 unit[N] = {1};
        mul(one, unit, r2);
    }

    static void load(u64 out[N], const unsigned char* le) {
        for (size_t i = 0; i < N; ++i) {
            out[i] = 0;
            for (size_t j = 0; j < 8; ++j) out[i] |= static_cast<u64>(le[8 * i + j]) << (8 * j);
        }
    }
    static void store(unsigned char* le, const u64 in[N]) {
        for (size_t i = 0; i < 8 * N; ++i) le[i] = static_cast<unsigned char>(in[i / 8] >> (8 * (i % 8)));
    }

    // r = 2r mod q, variable time (public use only).
    void double_mod(u64 r[N]) const {
        u64 top = r[N - 1] >> 63;
        for (size_t i = N - 1; i > 0; --i) r[i] = r[i] << 1 | r[i - 1] >> 63;
        r[0] <<= 1;
        bool ge = top != 0;
        if (!ge) {
            ge = true;
            for (size_t i = N; i-- > 0;)
                if (r[i] != q[i]) {
                    ge = r[i] > q[i];
                    break;
                }
        }
        if (ge) {
            u128 borrow = 0;
            for (size_t i = 0; i < N; ++i) {
                u128 d = static_cast<u128>(r[i]) - q[i] - borrow;
                r[i] = static_cast<u64>(d);
                borrow = (d >> 64) & 1;
            }
        }
    }

    // r = a * b / R mod q (CIOS). With a * b < R * q the sum stays below 2q
    // and one masked subtraction reduces it. r may alias a or b.
    void mul(u64 r[N], const u64 a[N], const u64 b[N]) const {
        u64 t[N + 2] = {};
        for (size_t i = 0; i < N; ++i) {
            u128 c = 0;
            for (size_t j = 0; j < N; ++j) {
                c = static_cast<u128>(a[j]) * b[i] + t[j] + (c >> 64);
                t[j] = static_cast<u64>(c);
            }
            c = static_cast<u128>(t[N]) + (c >> 64);
            t[N] = static_cast<u64>(c);
            t[N + 1] = static_cast<u64>(c >> 64);
            const u64 m = t[0] * qinv;
            c = static_cast<u128>(m) * q[0] + t[0];
            for (size_t j = 1; j < N; ++j) {
                c = static_cast<u128>(m) * q[j] + t[j] + (c >> 64);
                t[j - 1] = static_cast<u64>(c);
            }
            c = static_cast<u128>(t[N]) + (c >> 64);
            t[N - 1] = static_cast<u64>(c);
            t[N] = t[N + 1] + static_cast<u64>(c >> 64);
        }
        u64 s[N];
        u64 borrow = 0;
        for (size_t i = 0; i < N; ++i) {
            u128 d = static_cast<u128>(t[i]) - q[i] - borrow;
            s[i] = static_cast<u64>(d);
            borrow = static_cast<u64>(d >> 64) & 1;
        }
        // t < q exactly when the subtraction borrowed out of the top limb.
        const u64 keep_t = 0 - (borrow & (t[N] ^ 1) & 1);
        for (size_t i = 0; i < N; ++i) r[i] = s[i] ^ ((s[i] ^ t[i]) & keep_t);
        wipe(t, sizeof t);
        wipe(s, sizeof s);
    }

    // x * m^-1 mod q.
    void mul_inverse(u64 out[N], const u64 x[N], const u64 m[N]) const {
        u64 mm[N], acc[N], xm[N];
        mul(mm, m, r2);  // m < R, r2 < q: below 2q, reduced
        mul(xm, x, r2);
        std::memcpy(acc, one, sizeof acc);
        u64 e[N];
        std::memcpy(e, q, sizeof e);
        e[0] -= 2;  // q is odd and above 2^64: no borrow
        for (size_t bit = 64 * N; bit-- > 0;) {
            mul(acc, acc, acc);
            if ((e[bit / 64] >> (bit % 64)) & 1) mul(acc, acc, mm);  // public exponent
        }
        mul(acc, acc, xm);
        u64 unit[N] = {1};
        mul(out, acc, unit);
        wipe(mm, sizeof mm);
        wipe(acc, sizeof acc);
        wipe(xm, sizeof xm);
    }
};

template <size_t N>
Secret mul_inverse_n(const Bytes& x, const Bytes& m, const Bytes& q) {
    Mont<N> ctx(q);
    u64 xl[N], ml[N], d[N];
    Mont<N>::load(xl, x.data());
    Mont<N>::load(ml, m.data());
    ctx.mul_inverse(d, xl, ml);
    Secret out(8 * N);
    Mont<N>::store(out.data(), d);
    wipe(xl, sizeof xl);
    wipe(ml, sizeof ml);
    wipe(d, sizeof d);
    return out;
}

}  // namespace

Bytes curve_order(const std::string& curve_oid) {
    for (const Order& o : kOrders)
        for (const char* id : o.oids)
            if (id && curve_oid == id) {
                const std::string hex = o.q;
                Bytes le(hex.size() / 2);
                for (size_t i = 0; i < le.size(); ++i)
                    le[le.size() - 1 - i] = static_cast<unsigned char>(std::stoi(hex.substr(2 * i, 2), nullptr, 16));
                return le;
            }
    curve_by_oid(curve_oid);  // names the curves the library lacks
    throw Error("no group order known for curve " + curve_oid);
}

Secret mul_inverse_mod(const Bytes& x, const Bytes& m, const Bytes& q) {
    if (x.size() != q.size() || m.size() != q.size()) throw Error("key and mask lengths differ from the curve's");
    if (q.size() == 32) return mul_inverse_n<4>(x, m, q);
    if (q.size() == 64) return mul_inverse_n<8>(x, m, q);
    throw Error("unsupported modulus length");
}

}  // namespace formats
