#ifndef VANTORIUM_C_ERROR_H
#define VANTORIUM_C_ERROR_H

#include <vantorium/c/types.h>

#ifdef __cplusplus
extern "C" {
#endif

/** The domain of the SDK's own errors. */
#define VANTORIUM_ERROR_DOMAIN "com.vantorium"

/** The codes of the domain VANTORIUM_ERROR_DOMAIN. */
enum vantorium_error_codes {
  VANTORIUM_ERROR_NOT_CONFIGURED = 1,         /**< asked for before `vantorium_configure` succeeded */
  VANTORIUM_ERROR_INTERNAL = 2,               /**< the service or the SDK failed, or an argument was wrong */
  VANTORIUM_ERROR_NO_INTERNET_CONNECTION = 3, /**< the device is offline; ads need a connection */
  VANTORIUM_ERROR_NO_PRECACHED_DATA_TO_SHOW = 4, /**< nothing is on disk to show for the placement */
  VANTORIUM_ERROR_FUNCTION_IN_PROGRESS = 5       /**< the same call has not finished yet */
};

/** Who speaks: VANTORIUM_ERROR_DOMAIN, or the name of a part of the platform. Null for what is no error. */
VANTORIUM_API const char* vantorium_error_domain(vantorium_error* error);
/** The number of the failure within its domain: of the SDK's own one of `vantorium_error_codes`. 0 for what
 *  is no error. */
VANTORIUM_API int vantorium_error_code(vantorium_error* error);
/** One line for people: what was wrong and, where it helps, what to do. Null for what is no error. */
VANTORIUM_API const char* vantorium_error_text(vantorium_error* error);
/** The line that logs and reports carry; it has more of a platform error than the text. Null for what is no
 *  error. */
VANTORIUM_API const char* vantorium_error_message(vantorium_error* error);

/** Why the latest call on this thread that failed did so; null when none has. Lent until the next one
 *  fails; a call that succeeds leaves it alone. */
VANTORIUM_API vantorium_error* vantorium_last_error(void);
/** Forgets it. */
VANTORIUM_API void vantorium_clear_last_error(void);

#ifdef __cplusplus
}
#endif

#endif
