#ifndef KORVEX_CMS_H
#define KORVEX_CMS_H

#include "korvex_types.h"

#endif
