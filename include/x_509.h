#ifndef KORVEX_X_509_H
#define KORVEX_X_509_H

#include "korvex_types.h"

#endif
