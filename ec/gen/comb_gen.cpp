// Build-time generator of the fixed-base tables (ec/comb.h) for every
// built-in curve, with the engine's own arithmetic.
// Usage: comb_gen <output.cpp>
#include <stdio.h>

#include "ec/curves_2001.h"
#include "ec/curves_2012.h"
#include "ec/fast_ops.h"

namespace {

template <unsigned W, class Lit>
void emit(FILE* f, const Lit& lit) {
    const kx::grp::Curve<W> c = kx::ec::make_curve<W>(lit);
    kx::grp::Jac<W> base{c.gx, c.gy, c.p.one};
    fprintf(f, "  {\n");
    for (unsigned i = 0; i < 16 * W; ++i) {
        kx::grp::Jac<W> e = base;
        fprintf(f, "   {\n");
        for (unsigned d = 1; d <= 15; ++d) {
            if (d == 2) kx::grp::dbl(e, e, c);  // d * base; base has order q > 15, so only
            if (d > 2) kx::grp::add_ct(e, e, base, c);  // d = 2 is a doubling
            kx::bn::Num<W> x, y, xm, ym;
            kx::grp::to_affine(x, y, e, c);
            kx::fe::to_mont(xm, x, c.p);
            kx::fe::to_mont(ym, y, c.p);
            fprintf(f, "    {{");
            for (unsigned k = 0; k < W; ++k) fprintf(f, "0x%016llxull,", (unsigned long long)xm.w[k]);
            fprintf(f, "},{");
            for (unsigned k = 0; k < W; ++k) fprintf(f, "0x%016llxull,", (unsigned long long)ym.w[k]);
            fprintf(f, "}},\n");
        }
        fprintf(f, "   },\n");
        for (int k = 0; k < 4; ++k) kx::grp::dbl(base, base, c);  // 16^(i+1) * G
    }
    fprintf(f, "  },\n");
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        fprintf(stderr, "usage: %s <output.cpp>\n", argv[0]);
        return 2;
    }
    FILE* f = fopen(argv[1], "w");
    if (!f) {
        perror(argv[1]);
        return 1;
    }
    fprintf(f, "// Generated at build time by ec/gen/comb_gen.cpp. Do not edit.\n"
               "#include \"ec/comb.h\"\n\nnamespace kx {\nnamespace ec {\n\n"
               "alignas(64) const CombTable<4> kComb256[4] = {\n");
    emit<4>(f, kx::ec::kCryptoProA);
    emit<4>(f, kx::ec::kCryptoProB);
    emit<4>(f, kx::ec::kCryptoProC);
    emit<4>(f, kx::ec::kTest);
    fprintf(f, "};\n\nalignas(64) const CombTable<8> kComb512[2] = {\n");
    emit<8>(f, kx::ec::kParamSetA);
    emit<8>(f, kx::ec::kParamSetB);
    fprintf(f, "};\n\n}  // namespace ec\n}  // namespace kx\n");
    return fclose(f) == 0 ? 0 : 1;
}
