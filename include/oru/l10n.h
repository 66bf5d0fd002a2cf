/*
 * oru/l10n.h - message catalogs, locale parameters and locale data.
 */
#ifndef ORU_L10N_H
#define ORU_L10N_H

#include "oru/core.h"

#ifdef __cplusplus
extern "C" {
#endif

#ifdef __cplusplus
}
#endif

#endif /* ORU_L10N_H */
