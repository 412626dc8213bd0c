#ifndef KORVEX_GOST_34_10_2012_H
#define KORVEX_GOST_34_10_2012_H

#include "korvex_types.h"

#endif
