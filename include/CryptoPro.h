#ifndef KORVEX_CRYPTOPRO_H
#define KORVEX_CRYPTOPRO_H

#include "korvex_types.h"

#endif
