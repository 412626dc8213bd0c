// libKorvex: every public header.
#ifndef KORVEX_H
#define KORVEX_H

#include "GOST_28147_89.h"
#include "GOST_34_11_94.h"
#include "GOST_34_11_2012.h"
#include "pkcs5.h"
#include "GOST_34_10_2001.h"
#include "GOST_34_10_2012.h"
#include "PRNG.h"
#include "ASN1.h"
#include "Base64.h"
#include "CRC32.h"
#include "x_509.h"
#include "CMS.h"
#include "pkcs15.h"
#include "pkcs12.h"
#include "CryptoPro.h"

#endif
