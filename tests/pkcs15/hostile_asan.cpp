// Damaged and truncated PKCS#15 containers, run under AddressSanitizer: every
// container sits in a heap block of exactly its size, so any read or write
// outside it is reported. Readers must answer 30 (or 32 where a MAC catches
// the damage) and write the output only on success.
#include <gtest/gtest.h>

#include <memory>
#include <set>

#include "pkcs15/pkcs15_fixture.h"

namespace kt {
namespace {

const unsigned char kPl = 11;  // password length

// Every reader on its own exact copy of one damaged container: the result is
// one of the codes it may give and, on failure, the container is unchanged
// and the output untouched (the 2012 key record cleared).
// The 2001 readers (2000 PBKDF2 iterations each) run only when asked.
void run_all(const Bytes& damaged, const std::string& what, bool with2001 = false) {
    Bytes pwd = password();
    unsigned char* p = pwd.data();
    using K = type_uN<32>*;
    using T = TSecretKey*;
    auto run = [&](const char* fn, const std::set<unsigned>& codes, size_t n, unsigned char failed, auto call) {
        Exact c(damaged);
        Bytes out(n, 0xCC);
        unsigned r = call(c.get(), out.data());
        EXPECT_EQ(codes.count(r), 1u) << what << " " << fn << " " << r;
        if (r == 0) return;
        EXPECT_EQ(out, Bytes(n, failed)) << what << " " << fn;
        EXPECT_EQ(0, std::memcmp(c.get(), damaged.data(), damaged.size())) << what << " " << fn;
    };
    if (with2001) {
        run("get_key", {0, 30, 32}, 32, 0xCC, [&](auto c, auto o) { return pkcs15_get_key(c, K(o), p, kPl); });
        run("get_rnd_no_pass_chek", {0, 30}, 40, 0xCC,
            [&](auto c, auto o) { return pkcs15_get_rnd_no_pass_chek(c, o, p, kPl); });
    }
    run("get_key_2012", {0, 30}, 64, 0, [&](auto c, auto o) { return pkcs15_get_key_2012(c, T(o), p, kPl); });
    run("get_rnd_2012", {0, 30}, 40, 0xCC, [&](auto c, auto o) { return pkcs15_get_rnd_2012(c, o, p, kPl); });
    run("update_2012", {0, 30, 31, 32}, 0, 0, [&](auto c, auto) { return pkcs15_update_2012(c, p, kPl); });
    Exact c(damaged);
    pkcs15_get_version(c.get());
    pkcs15_get_pkcs15content(c.get());
}

// Cut to n octets, the outer length (long form, 2 octets) set to match.
Bytes truncated(const Bytes& c, size_t n) {
    Bytes t(c.begin(), c.begin() + n);
    t[1] = 0x82, t[2] = (unsigned char)((n - 4) >> 8), t[3] = (unsigned char)(n - 4);
    return t;
}

// Header positions of all elements whose content is itself a run of elements.
void headers(const Bytes& c, size_t at, size_t end, std::vector<size_t>& out) {
    while (at < end) {
        if (at + 2 > end || (c[at + 1] & 0x80 && at + 2 + (c[at + 1] & 0x7F) > end)) return;
        Der d = der(c, at);
        if (d.end() > end) return;
        out.push_back(at);
        if ((d.tag & 0x20) || d.tag == 0x04) headers(c, d.value(), d.end(), out);
        at = d.end();
    }
}

class Hostile : public ::testing::Test {
   protected:
    static void SetUpTestSuite() {
        seed(23);
        c786 = make_2001(0x80);
        c787 = make_2001(0x40);
        for (unsigned char kind : {1, 2}) {
            // One PBKDF2 iteration keeps the many 2012 runs cheap; the
            // readers honour the stored count.
            Bytes c = make_2012(kind, 0x40);
            size_t count = salt_at(c) + 32;
            c[count + 2] = 0, c[count + 3] = 1;
            c2012.push_back(c);
        }
    }
    static Bytes c786, c787;
    static std::vector<Bytes> c2012;
};
Bytes Hostile::c786, Hostile::c787;
std::vector<Bytes> Hostile::c2012;

TEST_F(Hostile, Truncated2001) {
    Bytes pwd = password();
    for (const Bytes* base : {&c786, &c787}) {
        for (size_t n : {6u, 40u, 149u, 210u, 300u, 453u, 454u, 600u, 673u, 674u, 700u, 785u}) {
            Exact c(truncated(*base, n));
            type_uN<32> key;
            std::memset(key.b, 0xCC, 32);
            // Cut short, a 787-octet container is read at the 786 offsets
            // (s = 0): its key MAC no longer matches.
            unsigned got = pkcs15_get_key(c.get(), &key, pwd.data(), kPl);
            EXPECT_EQ(got, n < 674 ? 30u : base == &c787 ? 32u : 0u) << n;
            if (got) { EXPECT_EQ(to_hex(key.b, 32), std::string(64, 'c')); }
            unsigned want = n < 674 ? 30 : 0;
            EXPECT_EQ(pkcs15_get_key_no_pass_chek(c.get(), want ? &key : nullptr, pwd.data(), kPl), want) << n;
            Bytes rnd(40);
            EXPECT_EQ(pkcs15_get_rnd(c.get(), rnd.data(), pwd.data(), kPl), n < 454 ? 30u : 0u) << n;
            EXPECT_EQ(pkcs15_update(c.get(), pwd.data(), kPl), 30u) << n;
        }
    }
}

TEST_F(Hostile, OuterHeader2001) {
    Bytes pwd = password();
    // Indefinite, over-long and oversized length forms, a wrong first tag or
    // first child: all rejected without reading on.
    for (const char* h : {"3080", "3085", "30FF", "3084FFFFFFFF", "3100", "3000"}) {
        Bytes c = c786, hb = from_hex(h);
        std::copy(hb.begin(), hb.end(), c.begin());
        Exact e(c);
        type_uN<32> key;
        EXPECT_EQ(pkcs15_get_key(e.get(), &key, pwd.data(), kPl), 30u) << h;
        EXPECT_EQ(pkcs15_get_rnd(e.get(), key.b, pwd.data(), kPl), 30u) << h;
        EXPECT_EQ(pkcs15_update(e.get(), pwd.data(), kPl), 30u) << h;
    }
    Bytes c = c786;
    c[4] = 0x30;  // first child no longer an INTEGER
    run_all(c, "first child", true);
}

// Every reader on each damaged container: the 2012 ones cut short (one
// octet short included), every length octet of the 2012 ones replaced, and
// random damage to all four.
TEST_F(Hostile, Damaged) {
    struct Case { std::string what; Bytes c; bool with2001; };
    std::vector<Case> cases;
    for (const Bytes& base : c2012) {
        for (size_t n = 6; n < base.size(); n += 23) cases.push_back({"cut to " + std::to_string(n), truncated(base, n), false});
        cases.push_back({"one octet short", truncated(base, base.size() - 1), false});
        std::vector<size_t> hs;
        headers(base, 0, base.size(), hs);
        ASSERT_GT(hs.size(), 60u);
        for (size_t h : hs)
            for (unsigned char v : {0x00, 0x01, 0x7F, 0x80, 0x82, 0x84, 0x85, 0xFF}) {
                cases.push_back({"length at " + std::to_string(h) + " = " + std::to_string(v), base, false});
                cases.back().c[h + 1] = v;
            }
    }
    Rng rng(99);
    std::vector<const Bytes*> all = {&c786, &c787, &c2012[0], &c2012[1]};
    for (int i = 0; i < 120; ++i) {
        cases.push_back({"random damage " + std::to_string(i), *all[i % 4], i % 4 < 2});
        for (int k = 0; k < 3; ++k) cases.back().c[rng.below((unsigned)cases.back().c.size())] = (unsigned char)rng.next();
    }
    for (const Case& k : cases) run_all(k.c, k.what, k.with2001);
}

// With the real iteration count, so that update_2012 gets past the password
// check into the digest, HMAC and rewrite paths.
TEST_F(Hostile, Update2012PastThePasswordCheck) {
    seed(29);
    Bytes pwd = password();
    for (unsigned char kind : {1, 2}) {
        Bytes good = make_2012(kind, 0x80);
        size_t from = ad_parts(good).content_os.value();
        Exact g(good);
        TSecretKey key;
        EXPECT_EQ(pkcs15_update_2012(g.get(), pwd.data(), kPl), 0u);
        EXPECT_EQ(pkcs15_get_key_2012(g.get(), &key, pwd.data(), kPl), 0u);
        Rng rng(kind);
        for (int i = 0; i < 12; ++i) {
            Bytes c = good;
            size_t at = from + rng.below((unsigned)(good.size() - from));
            c[at] ^= (unsigned char)(1 + rng.below(255));
            Exact e(c);
            unsigned r = pkcs15_update_2012(e.get(), pwd.data(), kPl);
            EXPECT_TRUE(r == 30 || r == 31) << at << " " << r;
            EXPECT_EQ(0, std::memcmp(e.get(), c.data(), c.size()));
        }
    }
    for (const Bytes* c : {&c786, &c787}) EXPECT_EQ(pkcs15_update(Exact(*c).get(), pwd.data(), kPl), 0u);
}

}  // namespace
}  // namespace kt
