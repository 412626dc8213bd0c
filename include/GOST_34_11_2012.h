#ifndef KORVEX_GOST_34_11_2012_H
#define KORVEX_GOST_34_11_2012_H

#include "korvex_types.h"

#endif
