/**
 * @file
 * oru/oru.h - the whole oru interface.
 */
#ifndef ORU_ORU_H
#define ORU_ORU_H

#include "oru/core.h"
#include "oru/decimal.h"
#include "oru/file.h"
#include "oru/hash.h"
#include "oru/l10n.h"
#include "oru/module.h"
#include "oru/system.h"
#include "oru/text.h"
#include "oru/thread.h"
#include "oru/time.h"
#include "oru/unicode.h"

#endif /* ORU_ORU_H */
