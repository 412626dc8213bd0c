#ifndef KORVEX_PKCS12_H
#define KORVEX_PKCS12_H

#include "korvex_types.h"

#endif
