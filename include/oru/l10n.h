/*
 * oru/l10n.h - message catalogs, locale parameters and locale data.
 */
#ifndef ORU_L10N_H
#define ORU_L10N_H

#include "oru/core.h"

#ifdef __cplusplus
extern "C" {
#endif

/*
 * Locale display names and ISO 3166 lists.
 *
 * Names of languages, territories and currencies, and currency symbols, in
 * the language of a locale, from compiled-in CLDR data.  The locale is two
 * lower-case ASCII letters ("de"), optionally followed by "_" and two
 * upper-case letters ("de_CH"); anything else (deu, de-CH, de_ch, DE, "")
 * gives null.  A name missing from a regional locale is taken from its
 * language, and then from the root locale, which holds only currency
 * symbols; a well-formed locale without data of its own ("xx") asks root
 * only.  Codes are case-sensitive ("EUR", not "eur").
 *
 * Each returns a constant UTF-8 string owned by the library (never freed),
 * or null when code or locale is null, the locale is malformed or no name is
 * found.  The functions allocate nothing, take no lock and are reentrant.
 */

/* The name of a language (ISO 639 code, "de") in the locale's language. */
ORU_API const char* oruCLDRGetLanguageDisplayName(const char* code, const char* locale);
/* The name of a territory (ISO 3166-1 alpha-2 code, "CH"). */
ORU_API const char* oruCLDRGetTerritoryDisplayName(const char* code, const char* locale);
/* The name of a currency (ISO 4217 code, "EUR"). */
ORU_API const char* oruCLDRGetCurrencyDisplayName(const char* code, const char* locale);
/* The symbol of a currency (ISO 4217 code): the euro sign for EUR in "de". */
ORU_API const char* oruCLDRGetCurrencySymbol(const char* code, const char* locale);

/*
 * ISO 3166 countries (alpha-2 codes, "DE") and their ISO 3166-2
 * subdivisions ("DE-BY"), with English names.  Codes are case-sensitive.
 * Listed are the countries for which the library keeps subdivisions, plus
 * KY and TF.  Names and codes are constant UTF-8 strings owned by the
 * library.
 */

/* A new array of the country codes in ascending order, ending with null.
 * The caller frees the array (not the codes) with oruFree.  Null when the
 * array cannot be allocated. */
ORU_API const char** oruGetISO3166Countries(void);

/* A new array of the subdivision codes of a country, in ascending order,
 * ending with null (only the null for a country without subdivisions).  The
 * caller frees the array with oruFree.  Null when country is null, empty or
 * not listed, or when the array cannot be allocated. */
ORU_API const char** oruGetISO3166Subdivisions(const char* country);

/* The English short name of a country ("Germany"); null when country is
 * null, empty or not listed. */
ORU_API const char* oruGetISO3166CountryName(const char* country);

/* The English name of a subdivision given by its full code ("DE-BY" gives
 * "Bayern"); null when code is null or unknown. */
ORU_API const char* oruGetISO3166SubdivisionName(const char* code);

#ifdef __cplusplus
}
#endif

#endif /* ORU_L10N_H */
