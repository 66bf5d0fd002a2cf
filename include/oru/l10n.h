/**
 * @file
 * oru/l10n.h - message catalogs, locale parameters and locale data.
 */
#ifndef ORU_L10N_H
#define ORU_L10N_H

#include "oru/core.h"

#ifdef __cplusplus
extern "C" {
#endif

/** @{ */
/**
 * Locale parameters.  Each can be set by the application (a process-wide
 * override, meant to be set at start-up before other threads read it);
 * otherwise it is derived from the C library's current locale or from the
 * operating system's user-default locale.
 *
 *   id  name                      value              set-time validation
 *   0   ORU_LP_LANGUAGE           ISO 639-1 code     two letters a-z
 *   1   ORU_LP_FALLBACK_LANGUAGE  second language    two letters a-z
 *   2   ORU_LP_TERRITORY          ISO 3166-1 code    two letters A-Z
 *   3   ORU_LP_APP_STRING         any string         none (never read)
 *   4   ORU_LP_SYSTEM_CHARSET     character-set name none
 *   5   ORU_LP_CONSOLE_CHARSET    character-set name none
 *   6   ORU_LP_APP_CHARSET        character-set name none
 *
 * Ids 1 and 3 read as the empty string until set.  For ids 0, 2, 4, 5 and 6
 * an empty override counts as not set: setting ids 4-6 to "" unsets them.
 *
 * Derivations (when not set).  The C library's locale is the name
 * setlocale(LC_CTYPE, NULL) reports, skipped when it is "C".  On POSIX
 * systems the user-default locale is the name in LC_ALL, LC_CTYPE or LANG
 * (the first set and non-empty; "C" when none is), of the form
 * language_TERRITORY.codeset\@modifier.
 *   - Language: the two letters before "_" in the C library's name; a
 *     Windows-style name ("German_Germany.1252") is looked up in the
 *     library's language-name table.  Without such a name, the user-default
 *     locale's two-letter language; "en" when there is none (the C locale),
 *     or when the code has three letters.
 *   - Territory: the two letters after "_" in the C library's name (or a
 *     Windows-style territory name ending at "."), else those of the
 *     user-default locale, else the empty string.
 *   - System and application character set: the codeset after "." in the C
 *     library's name, else the user-default locale's (for a name without a
 *     codeset, the one the C library gives that locale, so the C locale's
 *     ANSI_X3.4-1968 gives "US-ASCII").  A codeset is resolved first as a
 *     Windows code page number ("1252", also "CP1252", gives "windows-1252"),
 *     then through the character-set registry, giving the set's MIME name or
 *     else its primary name; glibc's spellings ("utf8", "iso88591", "eucjp")
 *     are recognised.  An unknown codeset gives "US-ASCII".
 *   - Console character set: the user-default locale's character set, as
 *     above; the C library's locale is not consulted.
 */
#define ORU_LP_LANGUAGE 0u          /**< ISO 639-1 language code */
#define ORU_LP_FALLBACK_LANGUAGE 1u /**< a second language */
#define ORU_LP_TERRITORY 2u         /**< ISO 3166-1 territory code */
#define ORU_LP_APP_STRING 3u        /**< the application's own string */
#define ORU_LP_SYSTEM_CHARSET 4u    /**< the system's character set */
#define ORU_LP_CONSOLE_CHARSET 5u   /**< the console's character set */
#define ORU_LP_APP_CHARSET 6u       /**< the application's character set */
/** @} */

/** oruGetLocaleParam flag: ignore the overrides of ids 0, 2, 4 and 5 and
 * derive from the user-default locale, skipping the C library's locale.  For
 * id 6 the override still wins; its derivation skips the C library's locale.
 * Ids 1 and 3 ignore the flag. */
#define ORU_LP_FROM_SYSTEM 1u

/** Copies the parameter's value, NUL included, into buffer.  Results: ORU_OK;
 * ORU_E_INVALID_ARG for a null buffer, size 0 or id above 6;
 * ORU_E_BUFFER_TOO_SMALL when size is not larger than the value's length;
 * ORU_E_OUT_OF_MEMORY when the derivation cannot allocate. */
ORU_API oruResult oruGetLocaleParam(uint32_t id, uint32_t flags, char* buffer, size_t size);

/** Stores a copy of value as the override of parameter id, after validating
 * it (see the table above), and re-decides whether the application and
 * system character sets need a conversion.  Results: ORU_OK (also when the
 * copy cannot be allocated: the slot is then unset); ORU_E_INVALID_ARG for a
 * null value, an id above 6, or a value failing validation. */
ORU_API oruResult oruSetLocaleParam(uint32_t id, const char* value);

/** Converts a Windows-style locale name language_territory.codepage[\@mod]
 * ("German_Germany.1252") into language_TERRITORY.charset
 * ("de_DE.windows-1252") in out.  The language is looked up in the language
 * table ("en" when missing or not a two-letter code), the territory and
 * code page in their tables.  Results: ORU_OK; ORU_E_INVALID_ARG for null
 * arguments, size 0, or an unknown territory or code page (also when either
 * is missing from the name); ORU_E_BUFFER_TOO_SMALL when size is not larger
 * than the result's length. */
ORU_API oruResult oruNativeToStdLocale(const char* native, char* out, size_t size);

/*
 * Message catalogs.
 *
 * Text domains are bound to directories; a catalog is the file
 *   DIR/LOCALE/CATEGORY/DOMAIN.mo
 * (with the platform's separator), where LOCALE is a locale directory name
 * such as "de_DE.windows-1252" (language_TERRITORY or language, ".", the
 * application character set) and CATEGORY one of the names below.  The
 * files are in this library's own binary format ("NWMO": a big-endian
 * header, a table of 2^k hash slots and NUL-terminated msgid/translation
 * pairs) and hold their translations in the application character set.
 *
 * Each catalog is read once, in one read, and kept until the process ends;
 * a catalog that was looked for and not found (or found malformed) is
 * remembered as missing for good, so a file created later is not seen by
 * the running process.  Changing a binding does not affect catalogs already
 * looked for.
 *
 * Lookups never fail: every failure gives back the very msgid pointer.  A
 * translation returned is a pointer into a loaded catalog, valid until the
 * process ends and usable from any thread.
 */

/** @{ */
/** Categories: the library's own numbers.  Any other number finds no
 * catalog. */
#define ORU_LC_COLLATE 1  /**< collation */
#define ORU_LC_CTYPE 2    /**< character classes */
#define ORU_LC_MONETARY 3 /**< money */
#define ORU_LC_NUMERIC 4  /**< numbers */
#define ORU_LC_TIME 5     /**< dates and times */
#define ORU_LC_MESSAGES 6 /**< messages, the default */
/** @} */

/** Binds domain to the directory holding its catalogs, or (dirname NULL)
 * queries the binding.  Returns the directory now bound, the library's own
 * copy, which the caller must not free and which stays valid until the
 * domain is bound again; NULL for a null or empty domain, for
 * a query of an unbound domain, and when memory runs out.  A new binding of
 * a domain (domains compare case-sensitively) replaces the earlier one. */
ORU_API const char* oruBindTextDomain(const char* domain, const char* dirname);

/** Sets (domain non-empty: a copy is stored) or queries (NULL) the calling
 * thread's current domain; the empty string clears it.  Returns the current
 * domain afterwards, "messages" when none is set.  The returned pointer is
 * valid until the thread sets another domain or ends. */
ORU_API const char* oruTextDomain(const char* domain);

/** The general lookup.  domain NULL means "messages"; a null or empty locale
 * lets the locale parameters choose the catalog: first
 * language_TERRITORY.appcharset, then language.appcharset, then
 * fallbacklanguage.appcharset, skipping a name whose parameters are empty.
 * The first of them for which a catalog exists decides, even when it lacks
 * msgid.  A given locale is used alone as LOCALE.appcharset (and one of 64
 * characters or more finds nothing).  Returns the translation, or msgid
 * itself when there is none or the translation is empty; NULL for a null
 * msgid. */
ORU_API const char* oruDCGetTextLC(const char* domain, const char* locale, const char* msgid,
                                   int category);

/** @{ */
/** Shorthands of oruDCGetTextLC: the current domain, no locale and
 * ORU_LC_MESSAGES where not given. */
ORU_API const char* oruGetText(const char* msgid);
ORU_API const char* oruDGetText(const char* domain, const char* msgid);
ORU_API const char* oruDGetTextLC(const char* domain, const char* locale, const char* msgid);
ORU_API const char* oruDCGetText(const char* domain, const char* msgid, int category);
/** @} */
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

/** The name of a language (ISO 639 code, "de") in the locale's language. */
ORU_API const char* oruCLDRGetLanguageDisplayName(const char* code, const char* locale);
/** The name of a territory (ISO 3166-1 alpha-2 code, "CH"). */
ORU_API const char* oruCLDRGetTerritoryDisplayName(const char* code, const char* locale);
/** The name of a currency (ISO 4217 code, "EUR"). */
ORU_API const char* oruCLDRGetCurrencyDisplayName(const char* code, const char* locale);
/** The symbol of a currency (ISO 4217 code): the euro sign for EUR in "de". */
ORU_API const char* oruCLDRGetCurrencySymbol(const char* code, const char* locale);

/*
 * ISO 3166 countries (alpha-2 codes, "DE") and their ISO 3166-2
 * subdivisions ("DE-BY"), with English names.  Codes are case-sensitive.
 * Listed are the countries for which the library keeps subdivisions, plus
 * KY and TF.  Names and codes are constant UTF-8 strings owned by the
 * library.
 */

/** A new array of the country codes in ascending order, ending with null.
 * The caller frees the array (not the codes) with oruFree.  Null when the
 * array cannot be allocated. */
ORU_API const char** oruGetISO3166Countries(void);

/** A new array of the subdivision codes of a country, in ascending order,
 * ending with null (only the null for a country without subdivisions).  The
 * caller frees the array with oruFree.  Null when country is null, empty or
 * not listed, or when the array cannot be allocated. */
ORU_API const char** oruGetISO3166Subdivisions(const char* country);

/** The English short name of a country ("Germany"); null when country is
 * null, empty or not listed. */
ORU_API const char* oruGetISO3166CountryName(const char* country);

/** The English name of a subdivision given by its full code ("DE-BY" gives
 * "Bayern"); null when code is null or unknown. */
ORU_API const char* oruGetISO3166SubdivisionName(const char* code);

#ifdef __cplusplus
}
#endif

#endif /* ORU_L10N_H */
