#ifndef KORVEX_PRNG_H
#define KORVEX_PRNG_H

#include "korvex_types.h"

#endif
