#ifndef VANTORIUM_C_DELEGATE_H
#define VANTORIUM_C_DELEGATE_H

#include <vantorium/c/types.h>

#ifdef __cplusplus
extern "C" {
#endif

/** The methods of a delegate. A null one is a method that it does not answer, and is not called. All are
 *  called on the main queue. Errors are null or lent for the call, texts are valid inside it. */
typedef struct vantorium_delegate_methods {
  /** `sizeof(vantorium_delegate_methods)`, so that methods can be added. */
  size_t size;
  /** "didReceiveRewardForPlacement:amount:": the service granted the reward of a rewarded ad, once per ad. */
  void (*did_receive_reward)(void* user_data, const char* placement, int64_t amount);
  /** "didPrecacheForPlacement:": an ad of the placement is on disk and can be shown. */
  void (*did_precache)(void* user_data, const char* placement);
  /** "didFailPrecacheForPlacement:error:": precaching for the placement failed or was refused. */
  void (*did_fail_precache)(void* user_data, const char* placement, vantorium_error* error);
  /** "didReceiveClickForPlacement:": the ad shown for the placement was clicked. */
  void (*did_receive_click)(void* user_data, const char* placement);
  /** "didConfigure": the SDK is configured. */
  void (*did_configure)(void* user_data);
  /** "didFailConfigureWith:": configuring failed or was refused. */
  void (*did_fail_configure)(void* user_data, vantorium_error* error);
} vantorium_delegate_methods;

/** A delegate with these methods, which are copied. Give the last reference up on the main thread: no
 *  method begins after that, and `free_user_data` is called at once, or when the method that is running
 *  returns. Given up on another thread, a method may still be running. Null on failure, and `user_data` has
 *  been freed then. */
VANTORIUM_API vantorium_delegate* vantorium_delegate_new(const vantorium_delegate_methods* methods,
                                                         void* user_data, vantorium_callback free_user_data);

#ifdef __cplusplus
}
#endif

#endif
