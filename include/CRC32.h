#ifndef KORVEX_CRC32_H
#define KORVEX_CRC32_H

#include "korvex_types.h"

#endif
