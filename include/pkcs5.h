#ifndef KORVEX_PKCS5_H
#define KORVEX_PKCS5_H

#include "korvex_types.h"

#endif
