#ifndef VANTORIUM_EXPORT_H
#define VANTORIUM_EXPORT_H

#if defined(__GNUC__)
/** Marks what applications may use. The libraries are built with everything else hidden. */
#define VANTORIUM_API __attribute__((visibility("default")))
/** Marks what hosts use besides that. It changes from release to release without notice: a host is built
 *  with the very version of the SDK that it runs with. */
#define VANTORIUM_HOST_API __attribute__((visibility("default")))
#else
#define VANTORIUM_API
#define VANTORIUM_HOST_API
#endif

#endif
