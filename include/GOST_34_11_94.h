#ifndef KORVEX_GOST_34_11_94_H
#define KORVEX_GOST_34_11_94_H

#include "korvex_types.h"

#endif
