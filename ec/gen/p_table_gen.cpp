// Build-time generator of p_table: runs the same doubling-table builder as
// GOST_34_10_2001_2P_table for CryptoPro-A and writes it out as a C++ source.
// Usage: p_table_gen <output.cpp>
#include <stdio.h>

#include "ec/point_tables.h"

int main(int argc, char** argv) {
    if (argc != 2) {
        fprintf(stderr, "usage: %s <output.cpp>\n", argv[0]);
        return 2;
    }
    static unsigned char table[kx::ec::kTableBytes];
    kx::ec::build_2P_table(table, kx::ec::curve_2001(1));
    FILE* f = fopen(argv[1], "w");
    if (!f) {
        perror(argv[1]);
        return 1;
    }
    fprintf(f,
            "// Generated at build time by ec/gen/p_table_gen.cpp: entry i = 2^i * P for the\n"
            "// CryptoPro-A base point (x then y, little-endian). Do not edit.\n"
            "#include \"GOST_34_10_2001.h\"\n\n"
            "KORVEX_API const unsigned char p_table[16384] = {\n");
    for (unsigned i = 0; i < sizeof table; ++i)
        fprintf(f, "%s0x%02x,%s", i % 16 ? " " : "    ", table[i], i % 16 == 15 ? "\n" : "");
    fprintf(f, "};\n");
    return fclose(f) == 0 ? 0 : 1;
}
