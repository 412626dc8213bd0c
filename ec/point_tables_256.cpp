// Exported table builders for the GOST R 34.10-2001 base points. The library
// itself does not use the tables; they let callers trade 16 KB for doublings.
#include "GOST_34_10_2001.h"
#include "ec/point_tables.h"

KORVEX_API void GOST_34_10_2001_2P_table(unsigned char* table, unsigned char set) {
    kx::ec::build_2P_table(table, kx::ec::curve_2001(set));
}

KORVEX_API void GOST_34_10_2001_xP_table(unsigned char* table, unsigned char set) {
    kx::ec::build_comb_table(table, kx::ec::curve_2001(set));
}

KORVEX_API void GOST_34_10_2001_NAF_2kP_table(unsigned char* table, unsigned char set) {
    kx::ec::build_odd_table(table, kx::ec::curve_2001(set));
}
