/* An end-to-end test of an application's rewarded video, in C, without a screen or a wait: it watches the
   video, gets its coins, and fails loudly when they do not come.

     vantorium-sandbox &           prints its URL
     c_ad_flow URL HOME-FOLDER */
#include <stdio.h>
#include <stdlib.h>

#include <vantorium/headless.h>

typedef struct {
  bool is_done;
  bool success;
  int64_t coins;
} flow;

static void fail(const char* what) {
  vantorium_error* error = vantorium_last_error();
  fprintf(stderr, "c_ad_flow: %s: %s\n", what, error ? vantorium_error_text(error) : "no reason given");
  exit(1);
}

/* Completions and delegate calls come on the main thread here, while `finish` runs the main queue. */
static void did_finish(void* user_data, bool success, vantorium_error* error) {
  flow* state = user_data;
  state->is_done = true;
  state->success = success;
  if (error) fprintf(stderr, "c_ad_flow: %s\n", vantorium_error_text(error));
}

static void did_receive_reward(void* user_data, const char* placement, int64_t amount) {
  flow* state = user_data;
  state->coins += amount;
  printf("%s paid %lld coins\n", placement, (long long)amount);
}

static bool is_done(void* user_data) { return ((flow*)user_data)->is_done; }

static bool has_coins(void* user_data) { return ((flow*)user_data)->coins > 0; }

/* Waits for the completion of what was just started. */
static void finish(vantorium_host* host, flow* state, const char* what) {
  if (!vantorium_headless_run_until(host, is_done, state, 30) || !state->success) fail(what);
  printf("%s: done\n", what);
  state->is_done = false;
}

static void watch(vantorium_host* host, flow* state) {
  vantorium_show_campaign("rewarded-main", NULL, did_finish, state, NULL);
  if (!vantorium_headless_move_video(host, 6, 12)) fail("the video is not on screen");
  if (!vantorium_headless_end_video(host, VANTORIUM_HEADLESS_VIDEO_ENDED, NULL))
    fail("the video does not end");
  if (!vantorium_headless_run_until(host, has_coins, state, 30)) fail("no coins came");
  if (!vantorium_headless_navigate(host, "closead://")) fail("the end card is not on screen");
  finish(host, state, "show");
}

int main(int argc, char** argv) {
  if (argc != 3) {
    fprintf(stderr, "usage: c_ad_flow URL HOME-FOLDER\n");
    return 2;
  }
  flow state = {0};
  vantorium_host* host = vantorium_headless_host_new(argv[2], true);
  if (!vantorium_set_host(host)) fail("no host");
  if (!vantorium_set_developer_settings(argv[1], argv[1], NULL)) fail("no service");
  const vantorium_delegate_methods methods = {.size = sizeof methods,
                                              .did_receive_reward = did_receive_reward};
  vantorium_delegate* delegate = vantorium_delegate_new(&methods, &state, NULL);
  vantorium_set_delegate(delegate);
  vantorium_set_auto_caching(false);

  vantorium_configure("org.example.game", NULL, NULL, did_finish, &state, NULL);
  finish(host, &state, "configure");
  vantorium_precache_campaigns("rewarded-main", NULL, did_finish, &state, NULL);
  finish(host, &state, "precache");
  watch(host, &state);

  vantorium_shutdown();
  vantorium_release(delegate);
  vantorium_release(host);
  return state.coins == 50 ? 0 : 1;
}
