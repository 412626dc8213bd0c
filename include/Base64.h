#ifndef KORVEX_BASE64_H
#define KORVEX_BASE64_H

#include "korvex_types.h"

#endif
