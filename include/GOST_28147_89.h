#ifndef KORVEX_GOST_28147_89_H
#define KORVEX_GOST_28147_89_H

#include "korvex_types.h"

#endif
