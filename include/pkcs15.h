#ifndef KORVEX_PKCS15_H
#define KORVEX_PKCS15_H

#include "korvex_types.h"

#endif
