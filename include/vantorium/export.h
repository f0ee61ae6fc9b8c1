#ifndef VANTORIUM_EXPORT_H
#define VANTORIUM_EXPORT_H

/** VANTORIUM_API marks what applications may use. The libraries are built with everything else hidden.
 *
 *  VANTORIUM_HOST_API marks what hosts use besides that. It changes from release to release without notice:
 *  a host is built with the very version of the SDK that it runs with. */
#if defined(__GNUC__)
#define VANTORIUM_API __attribute__((visibility("default")))
#define VANTORIUM_HOST_API __attribute__((visibility("default")))
#else
#define VANTORIUM_API
#define VANTORIUM_HOST_API
#endif

#endif
