#ifndef KORVEX_ASN1_H
#define KORVEX_ASN1_H

#include "korvex_types.h"

#endif
