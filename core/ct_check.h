// The one way out of the constant-time domain: a value derived from secrets
// that is public by construction (a loop test on a drawn value) is declared
// so to valgrind's memcheck, whose constant-time runs (tests/ctime) mark keys,
// nonces and the generator state undefined. Without valgrind's header, or
// outside valgrind, this is a handful of no-op instructions.
#ifndef KORVEX_CORE_CT_CHECK_H
#define KORVEX_CORE_CT_CHECK_H

#if defined(__has_include)
#if __has_include(<valgrind/memcheck.h>)
#include <valgrind/memcheck.h>
#define KORVEX_HAVE_MEMCHECK 1
#endif
#endif

namespace kx {
namespace ct {

template <class T>
inline void declassify(T& v) {
#ifdef KORVEX_HAVE_MEMCHECK
    (void)VALGRIND_MAKE_MEM_DEFINED(&v, sizeof v);
#else
    (void)v;
#endif
}

}  // namespace ct
}  // namespace kx

#endif
