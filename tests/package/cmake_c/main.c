/* An application in C outside the tree: makes a headless host, meets the service at the given address and
 * says so. */
#include <stdio.h>
#include <string.h>

#include <vantorium/headless.h>
#include <vantorium/version.h>

typedef struct {
  bool is_done;
  bool success;
} outcome;

static void did_configure(void* user_data, bool success, vantorium_error* error) {
  outcome* const result = user_data;
  result->is_done = true;
  result->success = success;
  if (error != NULL) fprintf(stderr, "not ready: %s\n", vantorium_error_text(error));
}

static bool is_done(void* user_data) { return ((const outcome*)user_data)->is_done; }

static int fail(const char* what) {
  vantorium_error* const error = vantorium_last_error();
  fprintf(stderr, "%s: %s\n", what, error != NULL ? vantorium_error_text(error) : "no reason given");
  return 1;
}

int main(int argc, char** argv) {
  if (argc != 3) {
    fprintf(stderr, "usage: consumer SERVICE HOME\n");
    return 2;
  }
  if (strcmp(vantorium_version(), VANTORIUM_VERSION) != 0) {
    fprintf(stderr, "the library is %s, its headers are %s\n", vantorium_version(), VANTORIUM_VERSION);
    return 1;
  }
  /* Refused in one library, told by the other. */
  if (vantorium_headless_host_new(NULL, false) != NULL || vantorium_last_error() == NULL)
    return fail("no refusal");
  vantorium_host* const host = vantorium_headless_host_new(argv[2], false);
  if (host == NULL || !vantorium_set_host(host)) return fail("no host");
  if (!vantorium_set_developer_settings(argv[1], argv[1], NULL)) return fail("no such service");

  outcome result = {false, false};
  vantorium_configure("package-consumer", NULL, NULL, did_configure, &result, NULL);
  const bool answered = vantorium_headless_run_until(host, is_done, &result, 30);
  vantorium_shutdown();
  vantorium_release(host);
  if (!answered) return fail("no answer");
  if (!result.success) return 1;
  printf("ready with %s\n", vantorium_version());
  return 0;
}
