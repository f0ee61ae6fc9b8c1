#!/usr/bin/env python3
"""An end-to-end test of an application's rewarded video, in Python, without a screen or a wait: it watches the video, gets
its coins, and fails loudly when they do not come. Nothing is compiled: ctypes calls the C API of the shared libraries.

    vantorium-sandbox &             prints its URL
    ad_flow.py URL HOME-FOLDER      with LD_LIBRARY_PATH, when the package is in a prefix of your own
"""

import ctypes
import sys
from ctypes import CFUNCTYPE, POINTER, byref, c_bool, c_char_p, c_double, c_int32, c_int64, c_size_t, c_void_p

Callback = CFUNCTYPE(None, c_void_p)
Completion = CFUNCTYPE(None, c_void_p, c_bool, c_void_p)
Condition = CFUNCTYPE(c_bool, c_void_p)
Reward = CFUNCTYPE(None, c_void_p, c_char_p, c_int64)
NOTHING_TO_FREE = Callback()

core = ctypes.CDLL("libvantorium.so.0")
headless = ctypes.CDLL("libvantorium-headless.so.0")


class DelegateMethods(ctypes.Structure):
    """Ends after the one method that is of interest, as its `size` tells the SDK."""

    _fields_ = [("size", c_size_t), ("did_receive_reward", Reward)]


def function(library, name, result, *arguments):
    found = getattr(library, name)
    found.restype, found.argtypes = result, arguments
    return found


entry_point = function(core, "vantorium_entry_point", c_void_p, c_char_p)
error_text = function(core, "vantorium_error_text", c_char_p, c_void_p)
last_error = function(core, "vantorium_last_error", c_void_p)
release = function(core, "vantorium_release", None, c_void_p)
shutdown = function(core, "vantorium_shutdown", c_bool)
set_host = function(core, "vantorium_set_host", c_bool, c_void_p)
set_developer_settings = function(core, "vantorium_set_developer_settings", c_bool, c_char_p, c_char_p, c_char_p)
delegate_new = function(core, "vantorium_delegate_new", c_void_p, POINTER(DelegateMethods), c_void_p, Callback)
host_new = function(headless, "vantorium_headless_host_new", c_void_p, c_char_p, c_bool)
run_until = function(headless, "vantorium_headless_run_until", c_bool, c_void_p, Condition, c_void_p, c_double)
move_video = function(headless, "vantorium_headless_move_video", c_bool, c_void_p, c_double, c_double)
end_video = function(headless, "vantorium_headless_end_video", c_bool, c_void_p, c_int32, c_char_p)
navigate = function(headless, "vantorium_headless_navigate", c_bool, c_void_p, c_char_p)


def by_name(selector, result, *arguments):
    """An entry point out of the SDK's own table, as a binding that is generated would find it."""
    return CFUNCTYPE(result, *arguments)(entry_point(selector.encode()))


configure = by_name("configureWithAppID:parameters:queue:completion:",
                    None, c_char_p, c_void_p, c_void_p, Completion, c_void_p, Callback)
precache_campaigns = by_name("precacheCampaignsForPlacement:queue:completion:",
                             None, c_char_p, c_void_p, Completion, c_void_p, Callback)
show_campaign = by_name("showCampaignForPlacement:serverParameter:completion:",
                        None, c_char_p, c_char_p, Completion, c_void_p, Callback)
set_delegate = by_name("setDelegate:", c_bool, c_void_p)
set_auto_caching = by_name("setAutoCaching:", None, c_bool)


def must(success):
    if not success:
        sys.exit(f"ad_flow: {(error_text(last_error()) or b'no reason given').decode()}")


class Flow:
    """The state of the test. Its callbacks are fields, for the SDK calls them and Python must not collect them."""

    def __init__(self, host):
        self.host, self.coins, self.outcome = host, 0, None
        self.did_finish = Completion(self.on_finish)
        self.methods = DelegateMethods(ctypes.sizeof(DelegateMethods), Reward(self.on_reward))

    def on_finish(self, _, success, error):  # the error is lent for the call: its text is copied
        self.outcome = (success, error_text(error).decode() if error else "refused")

    def on_reward(self, _, placement, amount):
        self.coins += amount
        print(f"{placement.decode()} paid {amount} coins")

    def wait(self, condition):
        must(run_until(self.host, Condition(lambda _: condition()), None, 30))

    def finish(self, what):
        """Waits for the completion of what was just started."""
        self.wait(lambda: self.outcome)
        (success, text), self.outcome = self.outcome, None
        if not success:
            sys.exit(f"ad_flow: {what}: {text}")
        print(f"{what}: done")


def watch(flow):
    show_campaign(b"rewarded-main", None, flow.did_finish, None, NOTHING_TO_FREE)
    must(move_video(flow.host, 6, 12))
    must(end_video(flow.host, 0, None))  # VANTORIUM_HEADLESS_VIDEO_ENDED
    flow.wait(lambda: flow.coins)
    must(navigate(flow.host, b"closead://"))
    flow.finish("show")


def main(service, home):
    host = host_new(home.encode(), True)
    must(host and set_host(host))
    must(set_developer_settings(service.encode(), service.encode(), None))
    flow = Flow(host)
    delegate = delegate_new(byref(flow.methods), None, NOTHING_TO_FREE)
    must(delegate and set_delegate(delegate))  # held weakly: the reference stays ours
    set_auto_caching(False)

    configure(b"org.example.game", None, None, flow.did_finish, None, NOTHING_TO_FREE)
    flow.finish("configure")
    precache_campaigns(b"rewarded-main", None, flow.did_finish, None, NOTHING_TO_FREE)
    flow.finish("precache")
    watch(flow)

    must(shutdown())
    release(delegate)
    release(host)
    sys.exit(0 if flow.coins == 50 else 1)


if __name__ == "__main__":
    if len(sys.argv) != 3:
        print("usage: ad_flow.py URL HOME-FOLDER", file=sys.stderr)
        sys.exit(2)
    main(*sys.argv[1:])
