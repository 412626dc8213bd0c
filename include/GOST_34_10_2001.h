#ifndef KORVEX_GOST_34_10_2001_H
#define KORVEX_GOST_34_10_2001_H

#include "korvex_types.h"

#endif
