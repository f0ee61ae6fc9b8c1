#pragma once

/// How the game looks; the names are the CSS classes that GameWindow gives its widgets.
inline constexpr const char* style = R"(
.bay { padding: 0; border: none; border-radius: 0; box-shadow: none; background: #1b7594; }
.bay:focus-visible { outline: 3px solid #ffffff; outline-offset: -8px; border-radius: 16px; }
.header { padding: 20px 20px 0 20px; }
.title { font-size: 26px; font-weight: 800; color: #ffffff; text-shadow: 0 1px 3px rgba(10, 50, 80, 0.55); }
.coins {
  font-size: 22px; font-weight: 800; color: #3a2a00; padding: 6px 16px;
  background: #ffffff; border-radius: 22px; box-shadow: 0 2px 6px rgba(10, 50, 80, 0.25);
}
.hint { font-size: 15px; color: #e4f4fa; }
.panel {
  margin: 12px; padding: 20px; border-radius: 24px;
  background: #ffffff; color: #1c2733; box-shadow: 0 4px 16px rgba(10, 40, 60, 0.3);
}
.offer-name { font-size: 19px; font-weight: 700; }
.quiet { font-size: 15px; color: #55616e; }
.panel button {
  min-height: 48px; border: none; border-radius: 16px; box-shadow: none; text-shadow: none;
  padding: 0 18px; font-size: 17px; font-weight: 700;
}
.panel button:focus-visible { outline: 3px solid #1257d6; outline-offset: 2px; }
.panel .buy { background: #1f7a5c; color: #ffffff; font-size: 16px; }
.panel .buy:hover { background: #18664c; }
.panel .watch { margin-top: 16px; min-height: 56px; background: #ffc94d; color: #3a2a00; font-size: 19px; }
.panel .watch:hover { background: #ffd571; }
.panel .play { margin-top: 12px; min-height: 56px; background: #c9b6ff; color: #2a1a5e; font-size: 19px; }
.panel .play:hover { background: #d6c8ff; }
.panel .page { margin-top: 12px; background: #dff1f4; color: #0f4a5c; }
.panel .page:hover { background: #cfe9ee; }
.panel button:disabled { background: #e6eaee; color: #6a7581; }
.panel .retry { min-height: 36px; margin-left: 14px; padding: 0 10px; background: none; color: #1257d6; font-size: 15px; }
.panel > box:last-child { margin-top: 10px; min-height: 36px; }
)";
